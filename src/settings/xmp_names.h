// Settings: the application's processing settings as an XMP packet, read and written.
//
// The namespaces of the packet, and the only identity value of the library: the maker's web host. A namespace URI is an
// identifier that need not resolve; names in this top-level domain are reserved (RFC 2606).
#pragma once

#include "support/text_search.h"

#include <string_view>

#define TVMETA_MAKER_HOST "tonalvista.test"
#define TVMETA_AUX_URI "http://ns.adobe.com/exif/1.0/aux/"
#define TVMETA_RDF_URI "http://www.w3.org/1999/02/22-rdf-syntax-ns#"

namespace tvmeta {

// The prefix of every settings property.
inline constexpr std::string_view SettingsPrefix = "tvtm:";

// The declaration of the settings namespace up to the slash after the host. The rest, which has a number, may vary.
inline constexpr QuotedText SettingsDeclaration{"xmlns:tvtm='http://" TVMETA_MAKER_HOST "/", 6};

// EXIF auxiliary properties (XMP additional properties), of which the lens name is read and written.
inline constexpr QuotedText AuxDeclaration{"xmlns:aux='" TVMETA_AUX_URI, 7};

// The opening tags of a packet (ISO 16684-1): the first without its closing quote, the second whole.
inline constexpr QuotedText XmpmetaOpening{"<x:xmpmeta xmlns:x='adobe:ns:meta/", 5};
inline constexpr QuotedText RdfOpening{"<rdf:RDF xmlns:rdf='" TVMETA_RDF_URI "'>", 5};

// The offset after a text that is found is part of a result.
static_assert(SettingsDeclaration.size() == 35 && AuxDeclaration.size() == 44);
static_assert(XmpmetaOpening.size() == 34 && RdfOpening.size() == 65);

} // namespace tvmeta

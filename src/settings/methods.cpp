#include "settings/methods.h"

#include "settings/value_curves.h"
#include "support/text_numbers.h"

#include <algorithm>

namespace tvmeta {

namespace {

using enum ValueKind;

// In the order of the written packet.
constexpr Parameter DetailsEnhancer[] = {
    {"Strength", DETAILS_ENHANCER_STRENGTH, VersionedNumber},
    {"ColorSaturation", DETAILS_ENHANCER_COLOR_SATURATION, VersionedNumber},
    {"Luminosity", DETAILS_ENHANCER_LUMINOSITY, VersionedNumber},
    {"WhiteClip", DETAILS_ENHANCER_WHITE_CLIP, Fraction},
    {"BlackClip", DETAILS_ENHANCER_BLACK_CLIP, Fraction},
    {"SmoothingMode", DETAILS_ENHANCER_SMOOTHING_MODE, SmoothingMode},
    {"Smoothing", DETAILS_ENHANCER_SMOOTHING_LEVEL, Smoothing},
    {"Microcontrast", DETAILS_ENHANCER_MICROCONTRAST, Microcontrast},
    {"Microsmoothing", DETAILS_ENHANCER_MICROSMOOTHING, VersionedNumber, "NoiseSmoothing"},
    {"Gamma", DETAILS_ENHANCER_GAMMA, Gamma},
    {"HighlightsSmoothing", DETAILS_ENHANCER_HIGHLIGHTS_SMOOTHING, VersionedNumber},
    {"ShadowsSmoothing", DETAILS_ENHANCER_SHADOWS_SMOOTHING, VersionedNumber},
    {"ShadowsClipping", DETAILS_ENHANCER_SHADOWS_CLIPPING, VersionedNumber},
    {"ColorTemperature", DETAILS_ENHANCER_COLOR_TEMPERATURE, VersionedNumber},
    {"SaturationHighlights", DETAILS_ENHANCER_SATURATION_HIGHLIGHTS, VersionedNumber},
    {"SaturationShadows", DETAILS_ENHANCER_SATURATION_SHADOWS, VersionedNumber},
    {"IsPano360", DETAILS_ENHANCER_IS_PANO_360, Panorama},
};
static_assert(std::ranges::find(DetailsEnhancer, SmoothingMode, &Parameter::kind) <
                  std::ranges::find(DetailsEnhancer, Smoothing, &Parameter::kind),
              "the reader needs the mode for the smoothing");

constexpr Parameter ToneCompressor[] = {
    {"Brightness", TONE_COMPRESSOR_BRIGHTNESS, VersionedNumber},
    {"Compression", TONE_COMPRESSOR_COMPRESSION, VersionedNumber},
    {"Contrast", TONE_COMPRESSOR_CONTRAST, VersionedNumber},
    {"WhiteClip", TONE_COMPRESSOR_WHITE_CLIP, Fraction},
    {"BlackClip", TONE_COMPRESSOR_BLACK_CLIP, Fraction},
    {"ColorTemperature", TONE_COMPRESSOR_COLOR_TEMPERATURE, VersionedNumber},
    {"Saturation", TONE_COMPRESSOR_SATURATION, VersionedNumber},
};

constexpr Parameter ContrastOptimizer[] = {
    {"Strength", CONTRAST_OPTIMIZER_STRENGTH, Number},
    {"ToneCompression", CONTRAST_OPTIMIZER_TONE_COMPRESSION, Number},
    {"LightingEffect", CONTRAST_OPTIMIZER_LIGHTING_EFFECT, Number},
    {"WhiteClip", CONTRAST_OPTIMIZER_WHITE_CLIP, Clip},
    {"BlackClip", CONTRAST_OPTIMIZER_BLACK_CLIP, Clip},
    {"Midtone", CONTRAST_OPTIMIZER_MIDTONE, Number},
    {"ColorTemperature", CONTRAST_OPTIMIZER_COLOR_TEMPERATURE, Number},
    {"Saturation", CONTRAST_OPTIMIZER_SATURATION, Number},
    {"IsPano360", CONTRAST_OPTIMIZER_IS_PANO_360, Panorama},
};

constexpr Parameter FusionAdjust[] = {
    {"Accentuation", FUSION_ADJUST_ACCENTUATION, Number},
    {"BlendingPoint", FUSION_ADJUST_BLENDING_POINT, Number},
    {"Shadows", FUSION_ADJUST_SHADOWS, Number},
    {"Saturation", FUSION_ADJUST_SATURATION, Number},
    {"WhiteClip", FUSION_ADJUST_WHITE_CLIP, Fraction},
    {"BlackClip", FUSION_ADJUST_BLACK_CLIP, Fraction},
    {"MidtonesAdjustment", FUSION_ADJUST_MIDTONES_ADJUSTMENT, Number},
    {"IsPano360", FUSION_ADJUST_IS_PANO_360, Panorama},
    {"Sharpness", FUSION_ADJUST_SHARPNESS, Number},
};

constexpr Parameter FusionIntensive[] = {
    {"Strength", FUSION_INTENSIVE_STRENGTH, Number},
    {"Saturation", FUSION_INTENSIVE_SATURATION, Number},
    {"Radius", FUSION_INTENSIVE_RADIUS, Number},
};

constexpr Parameter FusionRealEstate[] = {
    {"DepthHighlights", FUSION_REAL_ESTATE_DEPTH_HIGHLIGHTS, Number},
    {"Highlights", FUSION_REAL_ESTATE_HIGHLIGHTS, Number},
    {"Shadows", FUSION_REAL_ESTATE_SHADOWS, Number},
    {"LocalContrast", FUSION_REAL_ESTATE_LOCAL_CONTRAST, Number},
    {"Saturation", FUSION_REAL_ESTATE_SATURATION, Number},
    {"IsPano360", FUSION_REAL_ESTATE_IS_PANO_360, Panorama},
};

constexpr Method Methods[] = {
    {METHOD_DETAILS_ENHANCER, "Details Enhancer", "Contrast Enhancer", DetailsEnhancer},
    {METHOD_TONE_COMPRESSOR, "Tone Compressor", "Smooth Adaptation", ToneCompressor},
    {METHOD_CONTRAST_OPTIMIZER, "Contrast Optimizer", {}, ContrastOptimizer},
    {METHOD_FUSION_ADJUST, "Fusion/Adjust", "Fusion/Natural", FusionAdjust},
    {METHOD_FUSION_INTENSIVE, "Fusion/Intensive", {}, FusionIntensive},
    {METHOD_FUSION_REAL_ESTATE, "Fusion/Real-Estate", "Fusion/Realistic", FusionRealEstate},
};

// Callers get names as C strings.
constexpr bool isTerminated(std::string_view name) {
    return name.data()[name.size()] == '\0';
}

// The reader computes the position of a value from the length of the name; numbers are printed into a buffer of fixed
// size.
constexpr bool isUsable(const Parameter& parameter) {
    const std::size_t formerSize = parameter.formerName.size();
    return isTerminated(parameter.name) && (formerSize == 0 || formerSize == parameter.name.size()) &&
           formOf(parameter.kind).decimals <= MaxDecimals;
}
static_assert(std::ranges::all_of(Methods, [](const Method& method) {
    return isTerminated(method.name) && std::ranges::all_of(method.parameters, isUsable);
}));

} // namespace

std::span<const Method> methods() {
    return Methods;
}

const Method* findMethod(std::int32_t code) {
    const auto* const found = std::ranges::find(Methods, code, &Method::code);
    return found != std::end(Methods) ? found : nullptr;
}

const Parameter* findParameter(std::int32_t method, std::int32_t index) {
    const Method* const found = findMethod(method);
    const auto place = static_cast<std::size_t>(index); // beyond any table if negative
    return found != nullptr && place < found->parameters.size() ? &found->parameters[place] : nullptr;
}

} // namespace tvmeta

using namespace tvmeta;

const char* tvmeta_method_name(std::int32_t method) noexcept {
    const Method* const found = findMethod(method);
    return found != nullptr ? found->name.data() : nullptr;
}

std::int32_t tvmeta_parameter(std::int32_t method, std::int32_t index, tvmeta_Parameter* out) noexcept {
    const Parameter* const parameter = findParameter(method, index);
    if (parameter == nullptr) {
        return 0;
    }
    if (out != nullptr) {
        *out = {parameter->name.data(), parameter->slot, formOf(parameter->kind).publicKind};
    }
    return static_cast<std::int32_t>(findMethod(method)->parameters.size());
}

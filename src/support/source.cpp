#include "support/source.h"

#include "support/file.h"

namespace tvmeta {

namespace {

const tvmeta_Source& callersSource(void* context) {
    return *static_cast<const tvmeta_Source*>(context);
}

// Bytes beyond the size are never asked for. A source that returns more bytes than it was asked for is broken.
std::int64_t readCallersSource(void* context, std::int64_t position, void* buffer, std::int64_t count) {
    const tvmeta_Source& source = callersSource(context);
    if (position >= source.size) {
        return 0;
    }
    const std::int64_t wanted = count < source.size - position ? count : source.size - position;
    const std::int64_t read = source.read(source.context, position, buffer, wanted);
    return read <= wanted ? read : -1;
}

} // namespace

Source sourceOf(const tvmeta_Source& source) {
    return {const_cast<tvmeta_Source*>(&source), readCallersSource,
            [](void* context) { return callersSource(context).size; }};
}

Source StreamSource::source() {
    return {this, readStream, streamSize};
}

bool StreamSource::moveTo(std::int64_t position) {
    if (position_ != position && !seekTo(stream_, position)) {
        return false;
    }
    position_ = position;
    return true;
}

std::int64_t StreamSource::readStream(void* context, std::int64_t position, void* buffer, std::int64_t count) {
    auto& self = *static_cast<StreamSource*>(context);
    if (!self.moveTo(position)) {
        return -1;
    }
    const auto read = static_cast<std::int64_t>(std::fread(buffer, 1, static_cast<std::size_t>(count), self.stream_));
    self.position_ += read;
    return read;
}

std::int64_t StreamSource::streamSize(void* context) {
    auto& self = *static_cast<StreamSource*>(context);
    return self.position_ = fileSize(self.stream_);
}

} // namespace tvmeta

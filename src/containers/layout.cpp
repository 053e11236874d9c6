#include "containers/layout.h"

#include <algorithm>

namespace tvmeta {

void Layout::addStructure(Region region, std::int32_t directory) {
    if (structureCount_ < structures_.size() && region.size > 0) {
        structures_[structureCount_++] = {region, directory};
    }
}

void Layout::addPiece(std::int32_t block, Region region, std::uint32_t order) {
    if (region.size <= 0) {
        return;
    }
    if (pieceCount_ == pieces_.size()) {
        markBroken(region.position);
        return;
    }
    pieces_[pieceCount_++] = {block, order, region};
}

void Layout::addFirst(std::int32_t block, Region region) {
    if (!has(block)) {
        addPiece(block, region);
    }
}

void Layout::addCompressed(std::int32_t block, Region region) {
    if (!has(block)) {
        addPiece(block, region);
        compressed_ |= 1U << block;
    }
}

void Layout::offerLarger(std::int32_t block, Region region) {
    const std::span<Piece> known = pieces();
    const auto present = std::ranges::find(known, block, &Piece::block);
    if (present == known.end()) {
        addPiece(block, region);
    } else if (present->region.size < region.size) {
        present->region = region;
    }
}

void Layout::removePieces(std::int32_t block) {
    const auto end = std::remove_if(pieces_.begin(), pieces_.begin() + static_cast<std::ptrdiff_t>(pieceCount_),
                                    [block](const Piece& piece) { return piece.block == block; });
    pieceCount_ = static_cast<std::size_t>(end - pieces_.begin());
}

std::size_t Layout::regionsOf(std::int32_t block, std::span<Region> regions) const {
    std::size_t count = 0;
    for (const Piece& piece : pieces()) {
        if (piece.block == block && count < regions.size()) {
            regions[count++] = piece.region;
        }
    }
    return count;
}

// By insertion, which needs no memory, and one pass for pieces in order.
void Layout::sortPieces() {
    for (auto piece = pieces().begin(); piece != pieces().end(); ++piece) {
        const auto place = std::upper_bound(pieces().begin(), piece, *piece,
                                            [](const Piece& a, const Piece& b) { return a.order < b.order; });
        std::rotate(place, piece, piece + 1);
    }
}

bool Layout::has(std::int32_t block) const {
    const std::span<const Piece> known = pieces();
    return std::ranges::find(known, block, &Piece::block) != known.end();
}

bool readAt(SourceReader& reader, std::int64_t position, std::span<unsigned char> block) {
    return reader.seek(position) && reader.read(block) == block.size();
}

std::span<const unsigned char> readStart(SourceReader& reader, const Region& region, std::span<unsigned char> block) {
    const auto wanted = static_cast<std::uint64_t>(std::max<std::int64_t>(region.size, 0));
    block = block.first(static_cast<std::size_t>(std::min<std::uint64_t>(wanted, block.size())));
    return reader.seek(region.position) ? block.first(reader.read(block)) : std::span<unsigned char>();
}

} // namespace tvmeta

// tvmeta_find_brackets(): photographs into exposure brackets.
#include "photo/brackets.h"

#include "photo/file_names.h"
#include "support/zeroed_buffer.h"

#include <algorithm>

using namespace tvmeta;
using namespace tvmeta::brackets;

namespace {

// Spans one after the other in a block of memory.
class Arena {
  public:
    explicit Arena(ZeroedBuffer& block) : rest_(block.bytes()) {}

    template <typename Item>
    std::span<Item> take(std::size_t count) {
        const std::size_t size = (count * sizeof(Item) + Alignment - 1) / Alignment * Alignment;
        Item* const items = reinterpret_cast<Item*>(rest_.data());
        rest_ = rest_.subspan(size);
        return {items, count};
    }

    static constexpr std::size_t Alignment = alignof(std::max_align_t);

  private:
    std::span<unsigned char> rest_;
};

constexpr std::size_t BytesPerFile =
    sizeof(SortKey) + 1 + sizeof(std::int64_t) + sizeof(Frame) + sizeof(FoundSet) + sizeof(Place) + sizeof(double) + 1;
constexpr std::size_t BytesForEnds = 8 * Arena::Alignment + sizeof(FoundSet) + sizeof(double) + 1;
static_assert(std::is_trivially_copyable_v<Frame> && alignof(Frame) <= Arena::Alignment);

Workspace workspaceIn(ZeroedBuffer& block, std::size_t count) {
    Arena arena(block);
    Workspace work;
    work.keys = arena.take<SortKey>(count);
    work.clock = arena.take<unsigned char>(count);
    work.leaders = arena.take<std::int64_t>(count);
    work.frames = arena.take<Frame>(count);
    work.sets = arena.take<FoundSet>(count);
    work.places = arena.take<Place>(count);
    work.scores = arena.take<double>(count + 1);
    work.lengths = arena.take<unsigned char>(count + 1);
    return work;
}

// A set whose exposures occur in the same steps in another set close to it is no guess.
void confirmSeries(Workspace& work, std::size_t firstSet) {
    constexpr std::size_t Reach = 16;
    for (std::size_t i = firstSet; i < work.setCount; ++i) {
        for (std::size_t j = i + 1; j < work.setCount && j <= i + Reach; ++j) {
            FoundSet &a = work.sets[i], &b = work.sets[j];
            const bool areSeries = a.evidence == b.evidence && a.size > 2;
            if (areSeries && hasSameShape(work.framesOf(a), work.framesOf(b), &Frame::value)) {
                a.confidence = b.confidence = TVMETA_BY_PATTERN;
                a.expected = b.expected = a.size;
            }
        }
    }
}

void divideCamera(Run camera, const Options& options, Workspace& work) {
    const auto continues = [](const Frame& frame) { return frame.pause < HUGE_VAL; };
    if (options.count > 0) {
        return forEachPart(camera, continues, [&](Run run) { divideRunByCount(run, options, work); });
    }
    divideByCamera(camera, options, work);
    const std::size_t firstSet = work.setCount;
    forEachPart(camera, continues, [&](Run run) {
        if (run.front().kind == Kind::Manual || run.front().kind == Kind::Unknown) {
            divideByHand(run, options, work);
        }
    });
    confirmSeries(work, firstSet);
}

// In order of capture, then of names.
void sortSets(const Shots& shots, Workspace& work) {
    const auto found = work.sets.first(work.setCount);
    for (FoundSet& set : found) {
        set.time = work.keys[set.first].time;
        set.nanoseconds = work.keys[set.first].nanoseconds;
    }
    std::ranges::sort(found, [&](const FoundSet& a, const FoundSet& b) {
        if (a.time != b.time || a.nanoseconds != b.nanoseconds) {
            return a.time != b.time ? a.time < b.time : a.nanoseconds < b.nanoseconds;
        }
        if (work.keys[a.first].group == work.keys[b.first].group) {
            return a.first < b.first;
        }
        const std::size_t first = work.fileAt(a.first), second = work.fileAt(b.first);
        const int folders = compareNames(shots.folder(first), shots.folder(second));
        const int names = folders != 0 ? folders : compareNames(shots.name(first), shots.name(second));
        return names != 0 ? names < 0 : first < second;
    });
}

// The brightness of each exposure of a set in stops, less that of the middle one. Of two middle exposures, the one
// captured first counts. Equal exposures differ by their bias.
void writeOffsets(Run run, std::span<tvmeta_BracketMember> members, Workspace& work) {
    const bool areEqual = levelCount(run, &Frame::value, work) < 2;
    const std::span<Place> places = work.places.first(run.size());
    for (std::size_t i = 0; i < run.size(); ++i) {
        places[i] = {areEqual ? -run[i].bias : run[i].value, i};
    }
    std::ranges::sort(places, [](const Place& a, const Place& b) {
        return a.number != b.number ? a.number < b.number : a.place < b.place;
    });
    Place middle = places[run.size() / 2];
    if (run.size() % 2 == 0 && places[run.size() / 2 - 1].place < middle.place) {
        middle = places[run.size() / 2 - 1];
    }
    const bool isKnown = std::ranges::all_of(run, &Frame::isExposure) || areEqual;
    for (const Place& place : places) {
        members[static_cast<std::size_t>(run[place.place].file)].offset = isKnown ? middle.number - place.number : 0;
    }
}

void writeMembers(Workspace& work, std::span<tvmeta_BracketMember> members) {
    for (std::size_t i = 0; i < members.size(); ++i) {
        members[i] = {-1, 0, work.leaders[i], 0};
    }
    for (std::size_t i = 0; i < work.setCount; ++i) {
        const Run run = work.framesOf(work.sets[i]);
        for (std::size_t place = 0; place < run.size(); ++place) {
            tvmeta_BracketMember& member = members[static_cast<std::size_t>(run[place].file)];
            member.set = static_cast<std::int64_t>(i);
            member.place = static_cast<std::int64_t>(place);
        }
        writeOffsets(run, members, work);
    }
    for (tvmeta_BracketMember& member : members) {
        member = members[static_cast<std::size_t>(member.leader)];
    }
}

void writeSets(const Workspace& work, void* sets, std::uint32_t recordSize) {
    for (std::size_t i = 0; i < work.setCount; ++i) {
        const FoundSet& found = work.sets[i];
        tvmeta_BracketSet set = {};
        set.recordSize = recordSize;
        set.confidence = found.confidence;
        set.evidence = found.evidence;
        set.shots = static_cast<std::int64_t>(found.size);
        set.expectedShots = static_cast<std::int64_t>(found.expected);
        for (const Frame& frame : work.framesOf(found).subspan(1)) {
            set.longestPause = std::max(set.longestPause, frame.pause);
        }
        std::memcpy(static_cast<unsigned char*>(sets) + i * recordSize, &set,
                    std::min<std::size_t>(recordSize, sizeof set));
    }
}

Options optionsFrom(const tvmeta_BracketOptions* given) {
    tvmeta_BracketOptions options = {sizeof options, 0, -1};
    if (given != nullptr) {
        std::memcpy(&options, given, std::min<std::size_t>(given->recordSize, sizeof options));
    }
    return {options.count > 1 ? static_cast<std::size_t>(options.count) : 0, options.gap >= 0 ? options.gap : -1};
}

bool isRecordSize(std::uint32_t size) {
    return size >= sizeof size;
}

} // namespace

int64_t tvmeta_find_brackets(const tvmeta_Shot* shots, int64_t count, const tvmeta_BracketOptions* options,
                             tvmeta_BracketMember* members, tvmeta_BracketSet* sets) TVMETA_NOEXCEPT {
    if (count == 0) {
        return 0;
    }
    if (count < 0 || shots == nullptr || members == nullptr || sets == nullptr || !isRecordSize(shots->recordSize) ||
        !isRecordSize(sets->recordSize) || (options != nullptr && !isRecordSize(options->recordSize))) {
        return TVMETA_BAD_ARGUMENT;
    }
    const std::size_t files = static_cast<std::size_t>(count);
    if (files > (PTRDIFF_MAX - BytesForEnds) / BytesPerFile) {
        return TVMETA_NO_MEMORY;
    }
    ZeroedBuffer block(files * BytesPerFile + BytesForEnds);
    if (!block) {
        return TVMETA_NO_MEMORY;
    }
    const Shots input(shots, shots->recordSize, files);
    const Options chosen = optionsFrom(options);
    Workspace work = workspaceIn(block, files);
    findLeaders(input, work);
    makeFrames(input, chosen, work);
    forEachPart(
        work.frames, [](const Frame& frame) { return !frame.startsCamera; },
        [&](Run camera) { divideCamera(camera, chosen, work); });
    sortSets(input, work);
    writeMembers(work, {members, files});
    writeSets(work, sets, sets->recordSize);
    return static_cast<int64_t>(work.setCount);
}

const char* tvmeta_evidence_text(int32_t evidence) TVMETA_NOEXCEPT {
    static constexpr const char* Texts[] = {
        "", // by the numbers of evidence in the header, which start with 1
        "exposure mode 2, bias varies",
        "exposure mode 2, exposure varies",
        "automatic exposure, bias in regular steps",
        "exposures repeat",
        "exposures in regular steps",
        "exposures differ, no longer pause",
        "by the given count",
    };
    static_assert(std::size(Texts) == TVMETA_EVIDENCE_COUNT + 1);
    return Texts[evidence >= 0 && evidence <= TVMETA_EVIDENCE_COUNT ? evidence : 0];
}

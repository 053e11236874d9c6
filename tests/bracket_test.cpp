// The rule that groups photographs into exposure brackets: what is evidence of a set.
#include "testing/shoots.h"
#include "tvmeta_photo.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <span>

using namespace test;

namespace {

struct Case {
    const char* label;
    const char* shots;
    const char* expected;
    Rules rules = {};
};

void check(std::span<const Case> cases) {
    for (const Case& c : cases) {
        EXPECT_EQ(lettersOf(find(Photographer().take(c.shots).shots, c.rules)), c.expected)
            << c.label << ": " << c.shots;
    }
}

// Exposure mode 2: the camera varied the exposure.
TEST(Brackets, BelievesCameras) {
    const Case cases[] = {
        {"one press", "bracket bias fine 0 -2 2", "abc!"},
        {"brackets in a row", "bracket bias fine 0 -2 2 1s 0 -2 2 1s 0 -2 2", "abc! def! ghi!"},
        {"without a pause and a clock of seconds", "bracket bias whole -1 0 1 -1 0 1", "abc! def!"},
        {"shutter held, the last one short", "bracket bias fine 0 -1 1 0 -1 1 0 -1", "abc! def! gh/3!"},
        {"seven from the middle outward", "bracket bias fine 0 -1 1 -2 2 -3 3 9s 0 -1 1 -2 2 -3 3",
         "abcdefg! hijklmn!"},
        {"middle first, then from dark to bright", "bracket bias fine 0 -2 -1 1 2 1s 0 -2 -1 1 2", "abcde! fghij!"},
        {"two exposures", "bracket bias fine 0 -1 60s 0 -1", "ab! cd!"},
        {"thirds, rounded", "bracket bias fine -.33 0 .33 1s -.33 0 .33", "abc! def!"},
        {"interrupted after two", "bracket bias fine 0 -2 2 9s 0 -2 9s 0 -2 2", "abc! de/3! fgh!"},
        {"interrupted once, dark one first", "bracket bias fine -2 0 2 1s -2 0 1s -2 0 2", "abc! de/3! fgh!"},
        {"dark one deleted", "bracket bias fine -2 0 2 1.5s 0 2 1.5s -2 0 2 1.5s -2 0 2", "abc! de/3! fgh! ijk!"},
        {"test shot before", "auto bias fine 0 1s bracket -2 0 2", "bcd!; a"},
        {"test shot with the bracket on", "bracket bias fine 0 2s -2 0 2 2s -2 0 2", "bcd! efg!; a"},
        {"compensation between brackets", "bracket bias fine 0 -1 1 1s 1 0 2", "abc! def!"},
        {"compensation of a third", "bracket bias fine -2 0 2 1s -1.67 .33 2.33", "abc! def!"},
        {"interrupted once, then compensation", "bracket bias fine 0 -1 3s 1 0 2", "ab! cde!"},
        {"interrupted, then compensation", "bracket bias fine 0 -1 8s 1 0 2 8s 1 0 2", "ab/3! cde! fgh!"},
        {"drifting light at dusk", "bracket bias fine 0/0 -2.2/-2 1.6/2 1s -.6/0 -2.8/-2 1/2", "abc! def!"},
        {"rounded to thirds in changing light", "bracket level fine 0 -.67 1 -1.67 1.33 1s 0 -.67 1 -1.67 1.33",
         "abcde! fghij!"},
        {"manual exposure, no bias", "bracket level fine 0 -2 2 .5s 0 -2 2", "abc! def!"},
        {"shutter at its limit", "bracket fine bias -2/0 -2/-2 0/2 1s -2/0 -2/-2 0/2", "abc! def!"},
        {"exposures equal as recorded", "bracket bias fine 0/0 0/-1 0/1", "abc!"},
        {"one press for each", "bracket bias fine 0 9s -2 12s 2 14s 0 8s -2 9s 2", "abc! def!"},
        {"one press for each, first and last", "bracket bias fine -2 9s 0 16s 2", "; abc"},
        {"two at once, then a press", "bracket bias fine 0 .3s 1.33 9s 0 .3s 1.33 11s -1.33", "ab! cd!; e"},
        {"one press for each, one of them soon", "bracket bias fine -2 1s 0 9.8s 2 4s -2 6s 0 4s 2", "abc! def!"},
        {"three several times, then nine", "bracket bias fine -1 0 1 9s -1 0 1 9s -4 -3 -2 -1 0 1 2 3 4",
         "abc! def! ghijklmno!"},
        {"some deleted", "bracket bias fine -3 .3s -2 .3s -1 .3s 1 .3s 3", "abcde!"},
        {"some deleted, the rest not so quick", "bracket bias fine -3 1s -2 1s -1 1s 1", "abc!; d"},
        {"presses that make no bracket", "bracket bias fine 0 7s -1", "; ab"},
        {"noise reduction after 16 s", "bracket bias fine 10 18s 8 6s 12 80s 10 18s 8 6s 12", "abc! def!"},
        {"pause beyond single presses", "bracket level fine 0 15.5s -2 1s 2", "bc!; a"},
        {"gap given", "bracket bias fine 0 1s -2 3s 2", "ab!; c", {.count = 0, .gap = 2}},
        {"white balance or focus", "bracket level fine 0 0 0 1s 0 0 0", "; abcdef"},
        {"no exposure time", "bracket bias fine ?/0 ?/-1 ?/1", "abc!"},
        {"manual lens", "f0 bracket level fine 0 -2 2 1s 0 -2 2", "abc! def!"},
        {"no ISO speed", "noiso bracket level fine 0 -2 2", "abc!"},
        {"other frames between", "bracket bias fine 0 -2 auto 0 bracket 2", "ab!; cd"},
    };
    check(cases);
}

// Exposure mode 0.
TEST(Brackets, DistrustsAutomaticExposure) {
    const Case cases[] = {
        {"metering that wanders", "auto level fine 0 -1 1 .1s 0 -1 1 .1s 0 -1 1", "; abcdefghi"},
        {"burst in changing light", "auto level fine 0 .3 .7 1 1.3 1.7 2", "; abcdefg"},
        {"flash, bias varies", "auto bias fine 0/0 0/-1 0/1", "; abc"},
        {"corrections", "auto bias fine 0 5s -.33 7s -.67", "; abc"},
        {"correction in a walk", "auto bias fine 0 0 3s -1 9s -1", "; abcd"},
        {"bias that the exposure does not follow", "auto bias fine 0/0 1.5/-1 -1/1", "; abc"},
        {"bracket of another maker", "auto bias fine 0 -1 1 1s 0 -1 1", "abc? def?"},
        {"compensation by hand", "auto bias fine -2 5s -1 6s 0 4s 1 9s 2", "abcde?"},
        {"maker that hides brackets", "nikon auto bias fine -1 0 1 1s -1 0 1", "abc! def!"},
        {"hidden, test shot before and after", "nikon auto bias fine 0 1s -1 0 1 1s 0", "bcd!; ae"},
        {"hidden, one press for each", "nikon auto bias fine 0 9s -1 7s 1", "abc!"},
        {"hidden, interrupted", "nikon auto bias fine -1 0 1 9s -1 0 9s -1 0 1", "abc! de/3! fgh!"},
        {"hidden, interrupted, or a correction", "nikon auto bias fine -1 0 1 9s -1 0 1 9s -1 4s 0", "abc! def!; gh"},
        {"hidden, corrections", "nikon auto bias fine 0 4s -.33 4s -.67", "; abc"},
        {"hidden, a correction", "nikon auto bias fine 0 1s -1", "; ab"},
        {"hidden, two exposures", "nikon auto bias fine 0 .2s 1 9s 0 .2s 1", "ab! cd!"},
        {"hidden, two exposures, slowly", "nikon auto bias fine 0 3s 1 40s 0 2s 1 99s 0 4s 1", "ab? cd! ef?"},
        {"hidden, two exposures, twice", "nikon auto bias fine 0 3s 1 40s 0 2s 1", "; abcd"},
        {"hidden, corrections of several kinds",
         "nikon auto bias fine 0 3s 1 40s 0 2s 1 99s 0 4s 1 40s 0 3s -1 40s 0 3s .67", "; abcdefghij"},
        {"hidden, corrections from several settings", "nikon auto bias fine 0 3s 1 40s 1 2s 2 99s -1 4s 0 40s 0 3s 1",
         "; abcdefgh"},
        {"hidden, flash in thirds", "nikon auto bias fine 0/-.33 1s 0/0 1s 0/.33", "; abc"},
        {"hidden, two equal exposures", "nikon auto bias fine 0/0 .2s 0/1", "; ab"},
        {"hidden, two on a clock of seconds", "nikon auto bias whole 0 .2s 1", "; ab"},
        {"hidden, some deleted", "nikon auto bias fine 0 .2s -3 .2s -2 .2s -1 .2s 1", "abcde!"},
        {"hidden, uneven steps, slowly", "nikon auto bias fine -2 5s -1 5s 1 5s 2", "abcd?"},
        {"compensation by hand, a shot repeated", "auto bias fine -2 5s -1 5s -1 5s 0 5s 1 5s 2", "abcdef?"},
        {"hidden, by hand", "nikon auto bias fine 2 5s 1 5s 0 5s -1 5s -2", "abcde?"},
        {"hidden, long exposure at its limit", "nikon auto bias fine 8/-2 10/0 10/2", "abc!"},
        {"hidden, walk", "nikon auto level fine 0 5s 1 5s -1 5s .5", "; abcd"},
    };
    check(cases);
}

// Exposure mode 1.
TEST(Brackets, FindsSeriesByHand) {
    const Case cases[] = {
        {"dial turned, slowly", "manual fine -2 4s -1 9s 0 6s 1 14s 2", "abcde?"},
        {"from bright to dark", "manual fine 3 8s 1 20s -1 25s -3", "abcd?"},
        {"around the middle", "manual fine 0 8s -2 9s 2 7s -4 8s 4", "abcde?"},
        {"middle, down, then up", "manual fine 0 8s -1 9s -2 7s 1 8s 2", "abcde?"},
        {"scenes of a day", "manual fine -2 5s 0 6s 2 400s 0 8s 2 9s 4 40s -1 9s 1 9s 3", "abc def ghi"},
        {"scenes without a longer pause", "manual fine -2 9s 0 9s 2 9s -2 9s 0 9s 2", "abc def"},
        {"scenes apart by their pause", "manual fine -2 2s 0 3s 2 28s 4 3s 6 2s 8", "abc def"},
        {"one step forgotten", "manual fine -3 5s -2 5s -1 5s 1 5s 2", "abcde?"},
        {"uneven steps", "manual fine 0 5s 1 5s 3 5s 6", "abcd?"},
        {"uneven steps, from bright to dark", "manual fine 6 5s 5 5s 3 5s 0", "abcd?"},
        {"a shot repeated", "manual fine -2 5s -1 5s -1 5s 0 5s 1 5s 2", "abcdef?"},
        {"a shot repeated in the middle", "manual fine 0 5s 1 5s 2 5s 2 5s 3 5s 4 5s 5", "abcdefg?"},
        {"pauses that differ", "manual fine -2 2s 0 15s 2", "abc?"},
        {"pauses that differ more", "manual fine -2 2s 0 17s 2", "; abc"},
        {"two exposures that repeat by chance", "manual fine 9 8 8 8 9 8 8 8 9", "; abcdefghi"},
        {"bracket without a mark, on a clock of seconds", "manual whole 0 -1 1", "abc?"},
        {"settings on a clock of seconds", "manual whole 0 2s 1 2s .33", "; abc"},
        {"one exposure set back", "manual fine 8 1s 7 1s 8", "; abc"},
        {"test shot before", "manual fine 0 20s -2 5s 0 5s 2", "bcd?; a"},
        {"fast test shot before", "manual fine 0 1s -2 0 2", "bcd?; a"},
        {"fast shot after", "manual fine -2 0 2 1s 0", "abc?; d"},
        {"corrections of the exposure", "manual fine 0 5s .33 6s .67 7s .67", "; abcd"},
        {"fast corrections", "manual fine 0 1.5s .33 1.5s -.33", "; abc"},
        {"corrections, then kept", "manual fine 0 5s 1 6s 2 7s 2", "; abcd"},
        {"five corrections, then kept", "manual fine 0 5s 1 5s 2 5s 3 5s 4 5s 4", "; abcdef"},
        {"six steps, then kept", "manual fine 0 5s 1 5s 2 5s 3 5s 4 5s 5 5s 5", "abcdef?; g"},
        {"fast corrections, then kept", "manual fine 0 1.2s 1 1.2s 2 1.2s 2", "; abcd"},
        {"series after series", "manual fine 0 5s 1 6s 2 7s 2 5s 1 6s 0", "abc? def?"},
        {"two levels of light, without a pause between", "manual fine 0 -2 2 1s 1 -1 3 1s 0 -2 2 1s 1 -1 3",
         "abc def ghi jkl"},
        {"bias that varies with the exposure", "manual bias fine -.67 7s 0 7s .67", "abc?"},
        {"two settings", "manual fine 0 5s -2", "; ab"},
        {"two settings, fast", "manual fine 0 1s -2", "; ab"},
        {"sunset, in steps", "manual fine 0 5s 0 5s 0 5s .33 5s .33 5s .33 5s .67 5s .67 5s .67", "; abcdefghi"},
        {"automatic ISO speed", "manual iso fine 0 1 .4 0 1.2", "; abcde"},
        {"automatic ISO speed, twice the same", "manual iso fine 0 1 0 1 .5", "; abcde"},
        {"automatic ISO speed, slowly", "manual iso fine 0 5s 1 5s 2 5s .5", "; abcd"},
        {"bracket without a mark", "manual fine -2 0 2 1s -2 0 2", "abc def"},
        {"bracket without a mark, once", "manual fine 0 -1 1", "abc?"},
        {"exposures equal as recorded", "manual bias fine 0/0 0/-1 0/1", "abc?"},
        {"manual lens", "f0 manual fine -2 5s 0 5s 2", "abc?"},
        {"longest pause", "manual fine -2 5s 0 29s 2 29s 4", "abcd?"},
        {"beyond the longest pause", "manual fine -2 5s 0 5s 2 31s 4", "abc?; d"},
        {"one long pause", "manual fine -2 1s 0 25s 2", "; abc"},
        {"noise reduction", "manual fine 10 40s 8 9s 12 80s 14", "abcd?"},
        {"gap given", "manual fine -2 5s 0 5s 2", "; abc", {.count = 0, .gap = 2}},
        {"gap given, longer", "manual fine -2 60s 0 60s 2", "abc?", {.count = 0, .gap = 61}},
        {"range of corrections", "manual fine -.67 5s 0 5s .67", "; abc"},
        {"steps of thirds", "manual fine 0 5s .33 5s .67 5s 1 5s 1.33 5s 1.67 5s 2", "abcdefg?"},
        {"steps of quarters", "manual fine 0 5s .25 5s .5 5s .75 5s 1 5s 1.25 5s 1.5 5s 1.75 5s 2", "; abcdefghi"},
        {"one stray shot", "manual fine .4 5s -2 5s 0 5s 2", "bcd?; a"},
        {"two stray shots", "manual fine .4 5s .4 5s -2 5s 0 5s 2", "; abcde"},
        {"range of a series", "manual fine -1 5s 0 5s 1", "abc?"},
        {"ISO speeds in large steps", "manual iso fine 0 5s 1.1 5s 2.2 5s 3.3", "abcd?"},
        {"ISO speeds in smaller steps", "manual iso fine 0 5s .9 5s 1.8 5s 2.7", "; abcd"},
        {"three ISO speeds", "manual iso fine 0 5s 2 5s 4", "; abc"},
        {"period against the pauses", "manual fine 0 3s 2 25s -2 3s 0 3s 2 25s -2 3s 0 3s 2 25s -2", "cde fgh; abi"},
        {"interval series", "manual fine 0 5s 0 5s 0 5s 0 5s 0", "; abcde"},
    };
    check(cases);
}

// No exposure mode.
TEST(Brackets, GroupsByExposurePattern) {
    const Case cases[] = {
        {"three, order - 0 +", "-2 0 2 9s -2 0 2", "abc def"},
        {"five and seven", "0 -1 1 -2 2 9s 0 -1 1 -2 2 -3 3", "abcde? fghijkl?"},
        {"panorama of threes", "0 -2 2 0 -2 2 0 -2 2 0 -2 2", "abc def ghi jkl"},
        {"equal exposures inside, once", "-3 -2 -1 0 0 1 2", "abcdefg?"},
        {"equal exposures inside, twice", "-3 -2 -1 0 0 1 2 -3 -2 -1 0 0 1 2", "abcdefg hijklmn"},
        {"equal exposures first", "0 0 -2 2 0 0 -2 2", "abcd efgh"},
        {"a part repeats inside", "0 -2 0 -2 2 0 -2 0 -2 2", "abcde fghij"},
        {"last shot missing", "0 -2 2 0 -2", "abc? de/3?"},
        {"last two shots missing", "0 -2 2 0 -2 2 0", "abc def; g"},
        {"shot missing in a panorama", "0 -2 2 0 -2 2 0 -2 0 -2 2 0 -2 2", "abc def gh/3 ijk lmn"},
        {"stray shot before", "0 -2 0 2 -2 0 2", "bcd efg; a"},
        {"stray shot before, by its pause", "fine 2 2s -2 0 2 2s -2 0 2", "bcd efg; a"},
        {"end of a set, by the pauses", "fine 0 2 1s -2 0 2 1s -2 0 2 1s -2 0 2", "ab/3 cde fgh ijk"},
        {"stray shot after", "-2 0 2 -2 0 2 1", "abc def; g"},
        {"threes, then fives", "0 -2 2 0 -2 2 1 -1 -2 2 3 1 -1 -2 2 3", "abc def ghijk lmnop"},
        {"burst in drifting light", "0 0 0 .1 .1 .1 0", "; abcdefg"},
        {"bursts in changing light", "0 0 0 0 .4 .4 .4 .4 .8 .8 .8 .8", "; abcdefghijkl"},
        {"burst, then a set", "0 0 0 0 0 0 -2 1 2", "ghi?; abcdef"},
        {"two exposures", "0 -2", "ab?"},
        {"within a sixth of a stop", "0 -2 2 .15 -2.1 1.9", "abc def"},
        {"beyond a sixth of a stop", "0 .2 0 .2", "ab cd"},
        {"gap of two seconds and one for the clock", "0 3.01s -3", "ab?"},
        {"gap beyond", "0 4.1s -2", "; ab"},
        {"gap given", "0 4.1s -2 4.1s 2", "; abc", {.count = 0, .gap = 2}},
        {"gap given, longer", "0 4.1s -2 4.1s 2", "abc?", {.count = 0, .gap = 4}},
        {"gap from the end of 8, 32 and 128 s", "9 3s 11 3s 13 3s 9 3s 11 3s 13", "abc def"},
        {"gap after a long exposure", "9 11 5s 13", "ab?; c", {.count = 0, .gap = 2}},
        {"count of three", "0 -1 -2 0 -1 -2", "abc# def#", {.count = 3}},
        {"count against the pattern", "0 -2 0 -2 0 -2", "abc# def#", {.count = 3}},
        {"count against the camera", "bracket bias fine 0 -2 2 0 -2 2", "ab# cd# ef#", {.count = 2}},
        {"count of automatic exposures", "auto level fine 0 -1 1 8s 0 -1 1", "abc# def#", {.count = 3}},
        {"count with a stray shot before", "0 0 -2 2", "bcd#; a", {.count = 3}},
        {"count with a shot left", "-2 0 2 -2 0", "abc#; de", {.count = 3}},
        {"count above the shots", "-2 0 2", "; abc", {.count = 5}},
        {"count by hand", "manual fine 0 9s 3 9s 1 50s 2 9s 0 9s 5", "abc# def#", {.count = 3}},
        {"count against the pauses", "fine 0 9s 1 1s 2 1s 3 9s 4 1s 5", "bcd#; aef", {.count = 3}},
        {"count, pauses between shorter", "fine 0 5s 1 4.5s 2 5s 3", "ab# cd#", {.count = 2}},
        {"count with a gap", "fine 0 1s -1 9s 0 1s -1 1s 1", "ab# cd#; e", {.count = 2, .gap = 2}},
        {"count without exposures", "? ? ? ?", "ab# cd#", {.count = 2}},
        {"unknown exposure between", "0 ? -2 2", "acd?; b"},
    };
    check(cases);
}

// Stops from the middle exposure; of two, from the first.
TEST(Brackets, MeasuresOffsets) {
    const struct {
        const char* shots;
        std::vector<double> offsets;
    } cases[] = {
        {"0 -2 2", {0, -2, 2}},
        {"-2 0 2", {-2, 0, 2}},
        {"0 -2", {0, -2}},
        {"0 2", {0, 2}},
        {"1 -2 0 -1", {1, -2, 0, -1}},
        {"0 -1 -2 2", {0, -1, -2, 2}},
        {"iso 0 -1 1", {0, -1, 1}},
        {"bracket fine 0/0 0/-1 0/1", {0, -1, 1}},
        {"bracket ?/0 ?/-1 ?/1", {0, -1, 1}},
    };
    for (const auto& c : cases) {
        const Brackets found = find(Photographer().take(c.shots).shots);
        ASSERT_EQ(found.sets.size(), 1U) << c.shots;
        for (size_t i = 0; i < c.offsets.size(); ++i) {
            EXPECT_NEAR(found.members[i].offset, c.offsets[i], 1e-5) << c.shots;
        }
    }
}

TEST(Brackets, SaysWhy) {
    const struct {
        const char* shots;
        Rules rules;
        const char* evidence;
        double pause;
    } cases[] = {
        {"bracket bias fine 0 1s -2 3s 2", {}, "exposure mode 2, bias varies", 3},
        {"bracket level fine 0 1s -2 2s 2", {}, "exposure mode 2, exposure varies", 2},
        {"auto bias fine 0 -2 .5s 2", {}, "automatic exposure, bias in regular steps", .5},
        {"fine 0 -2 0 -2", {}, "exposures repeat", 0},
        {"manual fine -2 9s 0 8s 2", {}, "exposures in regular steps", 9},
        {"0 -2", {}, "exposures differ, no longer pause", 0},
        {"0 -2 2", {.count = 3}, "by the given count", 0},
    };
    for (const auto& c : cases) {
        const Brackets found = find(Photographer().take(c.shots).shots, c.rules);
        ASSERT_FALSE(found.sets.empty()) << c.shots;
        EXPECT_STREQ(tvmeta_evidence_text(found.sets[0].evidence), c.evidence) << c.shots;
        EXPECT_NEAR(found.sets[0].longestPause, c.pause, .02) << c.shots;
    }
    EXPECT_STREQ(tvmeta_evidence_text(0), "");
    EXPECT_STREQ(tvmeta_evidence_text(-1), "");
}

} // namespace

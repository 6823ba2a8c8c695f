#include "video/sound_alignment.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/speech.h"
#include "tests/support/test_folder.h"
#include "tests/video/clips.h"
#include "video/sound_track.h"

namespace zemora {
namespace {

constexpr Rational kRate{25, 1};

class Dice {
public:
    explicit Dice(unsigned seed) : state_(seed) {}
    /// 0 to 1.
    double next() {
        state_ = state_ * 1664525U + 1013904223U;
        return (state_ >> 8) / static_cast<double>(1U << 24);
    }

private:
    unsigned state_;
};

/// Words and steps: swells of different loudness at chance times, `seed` tells events apart.
SoundEnvelope event(double seconds, unsigned seed) {
    Dice dice(seed);
    SoundEnvelope envelope(static_cast<std::size_t>(seconds * kEnvelopeRate), 0.001F);
    for (double at = 0.1; at < seconds; at += 0.05 + 0.6 * dice.next()) {
        const double loudness = 0.02 + 0.3 * dice.next() * dice.next();
        const double length_s = 0.03 + 0.2 * dice.next();
        const auto first = static_cast<std::size_t>(at * kEnvelopeRate);
        const auto count = static_cast<std::size_t>(3 * length_s * kEnvelopeRate);
        for (std::size_t i = 0; i < count && first + i < envelope.size(); ++i) {
            envelope[first + i] +=
                static_cast<float>(loudness * std::exp(-static_cast<double>(i) / (length_s * kEnvelopeRate)));
        }
    }
    return envelope;
}

/// The event from a moment on, as a recorder with a gain and noise of its own takes it up.
SoundEnvelope recorded(const SoundEnvelope& event, double from_s, double seconds, float gain, double noise,
                       unsigned seed) {
    Dice dice(seed);
    const auto first = static_cast<std::size_t>(from_s * kEnvelopeRate);
    SoundEnvelope taken(static_cast<std::size_t>(seconds * kEnvelopeRate));
    for (std::size_t i = 0; i < taken.size(); ++i) {
        taken[i] = gain * event[first + i] + static_cast<float>(noise * dice.next());
    }
    return taken;
}

TEST(SoundOffset, OfOneEventIsFoundWithinAFrame) {
    const SoundEnvelope walk = event(700.0, 1);
    struct Case {
        double left_from_s, right_from_s, seconds, noise;
    };
    for (const auto& [left_from, right_from, seconds, noise] :
         {Case{40.0, 3.3, 600.0, 0.02}, Case{0.0, 31.47, 600.0, 0.05}, Case{5.0, 5.0, 600.0, 0.05},
          Case{10.0, 10.62, 20.0, 0.01}, Case{10.0, 7.0, 8.0, 0.0}}) {
        const auto left = recorded(walk, left_from, seconds, 1.0F, noise, 2);
        const auto right = recorded(walk, right_from, seconds, 0.2F, noise / 5, 3);
        const auto offset = find_sound_offset(left, right, kRate);
        ASSERT_TRUE(offset) << left_from << ' ' << right_from;
        EXPECT_NEAR(offset->seconds, left_from - right_from, 0.01) << left_from << ' ' << right_from;
        EXPECT_EQ(offset->frames, std::floor((left_from - right_from) * 25.0 + 0.5));
        EXPECT_NEAR(offset->residual_seconds, offset->seconds - offset->frames / 25.0, 1e-9);
    }
}

TEST(SoundOffset, OfEqualTracksIsZeroAlsoWhereTheyRepeatThemselves) {
    SoundEnvelope ticks(30 * kEnvelopeRate, 0.001F);
    for (std::size_t i = 100; i < ticks.size(); i += 500) {
        ticks[i] = 1.0F;
    }
    for (const SoundEnvelope& track : {event(60.0, 5), ticks}) {
        const auto offset = find_sound_offset(track, track, kRate);
        ASSERT_TRUE(offset);
        EXPECT_EQ(offset->seconds, 0.0);
        EXPECT_EQ(offset->frames, 0);
    }
}

TEST(SoundOffset, IsNotMadeUp) {
    const SoundEnvelope silence(20 * kEnvelopeRate, 0.0F);
    const SoundEnvelope even(20 * kEnvelopeRate, 0.3F);
    const SoundEnvelope hiss = recorded(silence, 0.0, 20.0, 0.0F, 0.1, 4);
    const SoundEnvelope other_hiss = recorded(silence, 0.0, 20.0, 0.0F, 0.1, 9);
    const SoundEnvelope walk = event(60.0, 5);
    const SoundEnvelope too_short(500, 0.1F);
    EXPECT_FALSE(find_sound_offset(silence, silence, kRate));
    EXPECT_FALSE(find_sound_offset(even, walk, kRate));
    EXPECT_FALSE(find_sound_offset(hiss, other_hiss, kRate));
    EXPECT_FALSE(find_sound_offset(hiss, walk, kRate));
    EXPECT_FALSE(find_sound_offset(too_short, too_short, kRate));
    EXPECT_FALSE(find_sound_offset({}, walk, kRate));
    for (unsigned seed = 10; seed < 20; ++seed) {
        EXPECT_FALSE(find_sound_offset(walk, event(60.0, seed), kRate)) << seed;
    }
}

TEST(SoundOffset, OfTwoFiles) {
    const test::TestFolder folder;
    const std::string sound = "anoisesrc=d=16:seed=7:r=44100,volume='pow(random(0),6)':eval=frame";
    const std::string picture = "-f lavfi -i color=black:s=32x32:r=25:d=12 -f lavfi -i \"";
    ASSERT_TRUE(test::run_ffmpeg(picture + sound +
                                 ",atrim=3:15,asetpts=PTS-STARTPTS\" -c:v mpeg4 -c:a aac '" +
                                 (folder / "left.mp4") + "'"));
    ASSERT_TRUE(
        test::run_ffmpeg(picture + sound +
                         ",atrim=0.76:12.76,asetpts=PTS-STARTPTS,volume=0.3\" -ar 48000 -c:v mjpeg -c:a "
                         "pcm_s16le '" +
                         (folder / "right.avi") + "'"));
    test::Speech speech;
    auto left = SoundTrack::open(folder / "left.mp4", speech.voice);
    auto right = SoundTrack::open(folder / "right.avi", speech.voice);
    ASSERT_TRUE(left && right);
    const auto offset =
        find_sound_offset(sound_envelope(**left, 0.0, 12.0), sound_envelope(**right, 0.0, 12.0), kRate);
    ASSERT_TRUE(offset);
    EXPECT_NEAR(offset->seconds, 2.24, 0.002);
    EXPECT_EQ(offset->frames, 56);
}

}  // namespace
}  // namespace zemora

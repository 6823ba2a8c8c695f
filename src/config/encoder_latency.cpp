#include "config/encoder_latency.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>
#include <thread>

namespace zemora {

namespace {

struct PresetRow {
    std::string_view preset;
    int animation_sync_lookahead;
    int sync_lookahead;
    int animation_bframes;
    int no_mbtree;
    int rc_lookahead;
    int b_adapt;
    int bframes;
};

// clang-format off
constexpr std::array kPresets{
    PresetRow{"ultrafast",  3,  1,  2, 1,  0, 0,  0},
    PresetRow{"superfast",  6,  4,  5, 1,  0, 1,  3},
    PresetRow{"veryfast",   6,  4,  5, 0, 10, 1,  3},
    PresetRow{"faster",     6,  4,  5, 0, 20, 1,  3},
    PresetRow{"fast",       6,  4,  5, 0, 30, 1,  3},
    PresetRow{"medium",     6,  4,  5, 0, 40, 1,  3},
    PresetRow{"slow",       6,  4,  5, 0, 50, 2,  3},
    PresetRow{"slower",     6,  4,  5, 0, 60, 2,  3},
    PresetRow{"veryslow",  11,  9, 10, 0, 60, 2,  8},
    PresetRow{"placebo",   19, 17, 18, 0, 60, 2, 16},
    PresetRow{"",           3,  1,  2, 0,  0, 0,  0},  // any other
};
// clang-format on

const PresetRow& preset_row(const std::string& preset) {
    return *std::find_if(kPresets.begin(), kPresets.end() - 1,
                         [&preset](const PresetRow& row) { return row.preset == preset; });
}

std::string latency_text(const EncoderSettings& settings, const EncoderLatency& latency,
                         const MessageCatalogue& messages) {
    struct Line {
        const char* label;
        int value;
    };
    std::string text = format_text(
        messages.either(
            {"Due to X264 encoder latency a frame offset of %d frames has been included.\n",
             "Wegen der Latenz des X264-Encoders ist ein Frameoffset von %d Frames enthalten.\n"}),
        latency.frames);
    text += "   - preset         = " + settings.preset + "\n   - tuning         = " + settings.tuning + '\n';
    for (const Line& line :
         {Line{"encoding_type ", settings.encoding_type}, Line{"zerolatency   ", settings.zero_latency},
          Line{"b_adapt       ", latency.b_adapt}, Line{"bframes       ", latency.bframes},
          Line{"no_mbtree     ", latency.no_mbtree}, Line{"rc_lookahead  ", latency.rc_lookahead},
          Line{"sliced_threads", latency.sliced_threads}, Line{"threads       ", latency.threads},
          Line{"sync_lookahead", latency.sync_lookahead}}) {
        text += format_text("   - %s = %d\n", line.label, line.value);
    }
    return text;
}

}  // namespace

int encoder_threads(int processors) {
    return 3 * std::max(processors, 1) / 2;
}

EncoderLatency encoder_latency(const EncoderSettings& settings, int threads) {
    const PresetRow& row = preset_row(settings.preset);
    EncoderLatency latency;
    latency.threads = threads;
    latency.b_adapt = row.b_adapt;
    if (settings.zero_latency == 1) {
        latency.sliced_threads = 1;
        latency.no_mbtree = 1;
        return latency;
    }
    const bool animation = settings.tuning == "animation";
    latency.bframes = animation ? row.animation_bframes : row.bframes;
    latency.sync_lookahead = animation ? row.animation_sync_lookahead : row.sync_lookahead;
    latency.no_mbtree = row.no_mbtree;
    latency.rc_lookahead = settings.encoding_type == 1 ? 0 : row.rc_lookahead;
    const bool by_bframes = latency.no_mbtree == 1 || latency.bframes >= latency.rc_lookahead;
    latency.frames =
        (by_bframes ? latency.bframes : latency.rc_lookahead) + threads - 1 + latency.sync_lookahead;
    return latency;
}

void settle_encoder_latency(ParameterSet& parameters, Voice& voice, const EncoderSettings* settings) {
    parameters.encoder_latency = 0;
    const bool is_x264 =
        parameters.video_codec.starts_with("x264") || parameters.video_codec.starts_with("X264");
    if (settings == nullptr || !is_x264 || parameters.video_container != setting::video_container::avi) {
        return;
    }
    const int processors = static_cast<int>(std::thread::hardware_concurrency());
    const EncoderLatency latency = encoder_latency(*settings, encoder_threads(processors));
    if (voice.verbose() > 1 && latency.frames > 0) {
        voice.print(latency_text(*settings, latency, voice.messages()));
        voice.wait(Severity::warning);
    }
    parameters.encoder_latency = latency.frames;
    const int highest = std::numeric_limits<int>::max() - latency.frames;
    parameters.last_frame_index = std::min(parameters.last_frame_index, highest) + latency.frames;
}

}  // namespace zemora

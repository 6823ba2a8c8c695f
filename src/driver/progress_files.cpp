#include "driver/progress_files.h"

#include <optional>
#include <span>
#include <utility>

#include "codec/encode.h"
#include "driver/failure.h"
#include "driver/product_names.h"
#include "input/mask_crop.h"
#include "numerics/rounding.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "render/thumbnails.h"

namespace zemora {

namespace {

/// Writes one of the small files that a front end watches; a front end that is gone is no failure.
void write_progress_file(const std::string& name, const std::string& text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());  // NOLINT: text as bytes
    (void)write_file_whole(state_directory() + '/' + name, std::span(bytes, text.size()));
}

std::string file_lines(const Pipeline& pipeline, const PairRun& pair) {
    const bool two = pipeline.list.two_files;
    return (two ? pair.files.left : pair.files.stereo) + '\n' + (two ? pair.files.right : pair.files.stereo) +
           '\n';
}

int is_last(const Pipeline& pipeline, const PairRun& pair) {
    return pair.index + 1 == pipeline.list.count() ? 1 : 0;
}

}  // namespace

void write_progress_start(const Pipeline& pipeline, const PairRun& pair) {
    if (pipeline.parameters.graphical_interface != 0) {
        write_progress_file(
            "zemora_actual.txt",
            file_lines(pipeline, pair) +
                format_text("%d/%d\n%d\n", pair.index + 1, pipeline.list.count(), is_last(pipeline, pair)));
    }
}

void write_progress_views(const Pipeline& pipeline, const PairRun& pair) {
    if (pipeline.parameters.graphical_interface != 0) {
        if (const auto written =
                write_mask_thumbs(pair.input.full(), state_directory(), std::nullopt, pair.notes);
            !written) {
            conclude_failure(pair.notes, written.failure());
        }
    }
}

void write_progress_result(const Pipeline& pipeline, const PairRun& pair) {
    if (pipeline.parameters.graphical_interface == 0) {
        return;
    }
    const Thumbnails thumbs = value_or_end(pair.notes, with_bars(pair.mounted.finished.thumbnails));
    const std::string start = state_directory() + "/zemora_thumb_";
    for (const auto& [thumb, side] : {std::pair{&thumbs.left, "l"}, std::pair{&thumbs.right, "r"}}) {
        (void)encode_and_write(*thumb, {PictureFormat::bmp}, start + side + ".bmp");
    }
}

void write_progress_end(const Pipeline& pipeline, const PairRun& pair) {
    if (pipeline.parameters.graphical_interface == 0) {
        return;
    }
    static constexpr const char* kRatioWords[] = {"", "", "(4:3)", "(16:10)", "(16:9)", "(Kino)"};
    const int choice = pipeline.parameters.projection_ratio;
    const bool projected = choice >= 2 && choice <= 5;
    write_progress_file(
        "zemora_finish.txt",
        file_lines(pipeline, pair) +
            format_text("%d\n%d\n%d\n%d\n%d\n%d%s\n", pipeline.parameters.video_mode != 0 ? 1 : 0,
                        pair.index + 1, pipeline.list.count(), static_cast<int>(pair.status),
                        is_last(pipeline, pair),
                        round_half_up(1000.0 * (projected ? projected_deviation(pipeline.parameters,
                                                                                pair.mounted.image_ratio,
                                                                                pair.mounted.deviation)
                                                          : pair.mounted.deviation)),
                        projected ? kRatioWords[choice] : ""));
}

}  // namespace zemora

#include "driver/mount.h"

#include <algorithm>
#include <utility>

#include "driver/measure_output.h"
#include "driver/warp_output.h"
#include "numerics/turn.h"
#include "report/height_judgement.h"

namespace zemora {

namespace {

PictureFacts facts_of(const MountedPair& mounted, const LocatedPair& located, const PairWish& wish,
                      const SettledOutput& output) {
    PictureFacts facts;
    facts.disparities = mounted.disparities;
    facts.selection = located.selection;
    facts.target = output.target;
    facts.frame = output.frame;
    facts.texts = wish.texts;
    facts.is_developed = wish.is_developed;
    facts.is_exchanged = wish.is_exchanged;
    facts.wants_thumbnails = wish.wants_thumbnails;
    return facts;
}

PictureSize size_before_turning(const Finished& finished) {
    return exchanges_sides(finished.left_turn) ? PictureSize{finished.height(), finished.width()}
                                               : PictureSize{finished.width(), finished.height()};
}

/// What was measured counts in the pixels of the final size.
void take_final_size(const PictureSize& size, MountedPair& mounted) {
    if (size == mounted.size) {
        return;
    }
    const double factor = static_cast<double>(size.width) / mounted.size.width;
    DisparityStatistics& d = mounted.disparities;
    for (float* value_px : {&d.near_point, &d.far_point, &d.centre_disparity, &d.left_edge_near,
                            &d.right_edge_near, &d.top_edge_near, &d.bottom_edge_near}) {
        *value_px = static_cast<float>(*value_px * factor);
    }
    mounted.size = size;
}

}  // namespace

std::vector<Doubt> doubts_about(const MountedPair& mounted, const LocatedPair& located,
                                double rejected_share) {
    if (!mounted.heights) {
        return {};
    }
    const HeightVerdict heights = judge_heights(*mounted.heights, mounted.deviation).verdict;
    return doubts_of({located.geometry.correction, rejected_share, heights, located.geometry.agreement});
}

Result<MountedPair> mount(const InputViews& views, const LocatedPair& located, const PairWish& wish,
                          const MountSettings& settings, Workbench& bench, Notes& notes) {
    const Result<SettledOutput> output = warp_output(views, located, wish, settings, bench, notes);
    if (!output) {
        return output.failure();
    }
    Result<MountedPair> measured = measure_output(located, settings, bench, notes);
    if (!measured || !is_written(measured->status)) {
        return measured;
    }
    MountedPair mounted = *std::move(measured);
    mounted.doubts = doubts_about(mounted, located, bench.analysis.rejected_share);
    mounted.status = std::min({located.geometry.status, output->status,
                               mounted.doubts.empty() ? StatusCode::success : StatusCode::usable});
    const PictureFacts facts = facts_of(mounted, located, wish, *output);
    Result<Finished> finished = finish_pair(bench.warped, settings.finish, facts, notes);
    if (!finished) {
        return finished.failure();
    }
    mounted.finished = *std::move(finished);
    take_final_size(size_before_turning(mounted.finished), mounted);
    return {std::move(mounted)};
}

}  // namespace zemora

// The geometry of a pair, and the views of a pair that comes as a photo with its mask.

#include "driver/depth_stage.h"
#include "driver/failure.h"
#include "driver/pipeline.h"
#include "driver/settings_mount.h"
#include "report/analysis_rows.h"

namespace zemora {

namespace {

GeometrySource source_of(const PairRun& pair) {
    if (counts_as_measured(pair.mode)) {
        return GeometrySource::pictures;
    }
    if (pair.mode == setting::estimate_geometry::from_keys) {
        return GeometrySource::keys;
    }
    return pair.has_stored ? GeometrySource::record : GeometrySource::nothing;
}

GeometryWish geometry_wish(const Pipeline& pipeline, const PairRun& pair) {
    return {source_of(pair), use_keys(pipeline.parameters), pair.stored, pair.wish.scaled,
            pair.orders.has_pre_selection ? pair.orders.pre_selection : PreSelection()};
}

bool find_pair_geometry(Pipeline& pipeline, PairRun& pair) {
    pipeline.analysis_dump.set_pair(pair.left_relative, pipeline.list.two_files ? pair.right_relative : "",
                                    pair.notes);
    pair.located = value_or_end(pair.notes, find_geometry(pair.input, geometry_wish(pipeline, pair),
                                                          pipeline.settings, pipeline.bench, pair.notes));
    pair.status = pair.located.geometry.status;
    // As far as they are known before the output is measured.
    pair.mounted.deviation = pair.located.deviation;
    pair.mounted.near_input_px = pair.located.near_input_px;
    if (is_written(pair.status)) {
        return true;
    }
    return pair.status == StatusCode::no_result ? false : fail_to_mount(pipeline, pair, pair.status);
}

}  // namespace

bool locate_pair(Pipeline& pipeline, PairRun& pair) {
    if (!find_pair_geometry(pipeline, pair)) {
        pair.course = Course::ended;
        return false;
    }
    make_depth_views(pipeline, pair);
    return true;
}

}  // namespace zemora

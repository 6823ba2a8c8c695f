// The geometry of a pair from its pictures.

#include "driver/failure.h"
#include "driver/measuring.h"

namespace zemora {

namespace {

MeasureSettings measure_settings(const ParameterSet& p) {
    return {p.iterative_warp, p.iterative_min, p.progress_output == 1};
}

}  // namespace

bool measure_geometry(Pipeline& pipeline, PairRun& pair) {
    const InputViews& input = pipeline.input;
    pipeline.analysis_dump.set_names(pair.left_relative, pipeline.list.two_files ? pair.right_relative : "");
    PipelineWarp warp(pipeline, pair);
    PairGeometry geometry = value_or_end(
        pipeline.voice, measure_pair({input.full(), input.reduced()}, measure_settings(pipeline.parameters),
                                     {pipeline.analysis, warp}, pipeline.voice));
    geometry.preset = pair.geometry.preset;
    geometry.shape = pair.geometry.shape;
    pair.geometry = geometry;
    pair.status = geometry.status;
    if (is_written(geometry.status)) {
        return true;
    }
    return geometry.status == StatusCode::no_result ? false : fail_to_mount(pipeline, pair, geometry.status);
}

}  // namespace zemora

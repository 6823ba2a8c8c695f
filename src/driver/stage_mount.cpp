// From the views and their corrections to the finished pictures.

#include <algorithm>

#include "driver/failure.h"
#include "driver/pipeline.h"
#include "driver/thumbnail_files.h"
#include "input/picture_file.h"

namespace zemora {

PairWish wish_of(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const std::string& source = pipeline.list.two_files ? pair.files.left : pair.files.stereo;
    PairWish wish;
    wish.target = pair.target;
    wish.size = pair.wish;
    wish.texts = {source, pair.headline, pair.stamp, pair.index};
    wish.is_developed = p.output_format == setting::output_format::tif_16_bits && is_loaded_upright(source);
    wish.is_exchanged = pair.inverse_output == 1;
    wish.wants_thumbnails = p.graphical_interface != 0 ||
                            (pair.html_images == setting::html_images::thumbnails && stores_products(p));
    return wish;
}

bool mount_views(Pipeline& pipeline, PairRun& pair) {
    Result<MountedPair> mounted = mount(pair.input, pair.located, wish_of(pipeline, pair), pipeline.settings,
                                        pipeline.bench, pair.notes);
    if (!mounted) {
        conclude_failure(pair.notes, mounted.failure());
        return fail_to_mount(pipeline, pair, StatusCode::failed);
    }
    pair.mounted = *std::move(mounted);
    if (!is_written(pair.mounted.status)) {
        return fail_to_mount(pipeline, pair, pair.mounted.status);
    }
    pair.status = pair.mounted.status;
    std::swap(pair.warped, pipeline.bench.warped);
    return true;
}

}  // namespace zemora

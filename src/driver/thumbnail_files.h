#pragma once
/// The thumbnails of a pair beside its pictures.

#include "driver/pipeline.h"

namespace zemora {

/// Stores them in the folder ct below the image folder, with their tags for the HTML report, where
/// `HtmlImages` came out as 4 and something is stored.
void store_thumbnails(Pipeline& pipeline, PairRun& pair);

/// Whether a run writes pictures at all.
[[nodiscard]] bool stores_products(const ParameterSet& parameters);

}  // namespace zemora

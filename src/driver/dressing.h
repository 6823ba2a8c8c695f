#pragma once
/// What goes onto and beside the pictures of a pair: its texts and its thumbnails.

#include "driver/pipeline.h"

namespace zemora {

/// Settles image text, caption and copyright for the pair, and draws the image text into both views.
[[nodiscard]] PictureTexts dress_with_texts(Pipeline& pipeline, const PairRun& pair);

/// Thumbnails in the folder ct below the image folder, with their tags for the HTML report, where
/// `HtmlImages` came out as 4 and something is stored.
void make_thumbnails(Pipeline& pipeline, PairRun& pair);

}  // namespace zemora

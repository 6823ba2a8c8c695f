#include "driver/dressing.h"

#include "driver/failure.h"
#include "platform/paths.h"
#include "render/picture_texts.h"
#include "render/thumbnails.h"
#include "report/picture_tags.h"

namespace zemora {

namespace {

/// The left input, which the texts speak of.
const std::string& source_of(const Pipeline& pipeline, const PairRun& pair) {
    return pipeline.list.two_files ? pair.files.left : pair.files.stereo;
}

TextSource text_source(Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    TextSource source{source_of(pipeline, pair), {}, pair.stamp, pair.index};
    const bool is_tagged =
        pair.left_suffix == ".jpg" || pair.left_suffix == ".tif" || pair.left_suffix == ".mpo";
    for (const std::string* setting : {&p.image_text, &p.caption_text, &p.exif_copyright}) {
        if (is_tagged && source.headline.empty() && wants_headline(*setting)) {
            source.headline = pipeline.exiftool.read_headline(source.file);
        }
    }
    return source;
}

/// Below ct, where the picture lies below the image folder. Pictures from elsewhere may share their bare
/// name.
std::string claim_thumb(Pipeline& pipeline, const std::string& relative, const char* tail) {
    const std::string below = is_absolute(relative) ? bare_name_of(relative) : relative;
    const std::string file = join_path(pipeline.parameters.path_of_images, "ct/" + without_suffix(below));
    OutputName name;
    name.folder = folder_of(file);
    name.base = bare_name_of(file);
    name.tail = tail;
    name.suffix = ".jpg";
    (void)pipeline.given_names.give_free_name(name);
    return name.path();
}

/// The names stay the same when the pair is mounted once more.
void name_thumbs(Pipeline& pipeline, PairRun& pair) {
    if (pair.left_thumb.empty()) {
        const bool two = pipeline.list.two_files;
        pair.left_thumb = claim_thumb(pipeline, pair.left_relative, two ? "" : "_l");
        pair.right_thumb = claim_thumb(pipeline, pair.right_relative, two ? "" : "_r");
    }
}

}  // namespace

PictureTexts dress_with_texts(Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const TextSource source = text_source(pipeline, pair);
    PictureTexts texts;
    texts.image_text = resolve_text(p.image_text, source, pipeline.voice);
    texts.caption = resolve_text(p.caption_text, source, pipeline.voice);
    texts.copyright = resolve_text(p.exif_copyright, source, pipeline.voice);
    if (texts.image_text) {
        draw_image_text(pipeline.warped.views(), texts.image_text, 0, -pair.curtains.right,
                        p.smart_text_back_gr == 1, pipeline.voice);
    }
    return texts;
}

void make_thumbnails(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const bool stores =
        p.left_right_output != 0 || p.stereo_output != 0 || p.anaglyph_output != 0 || p.extra_output != 0;
    if (pair.html_images != setting::html_images::thumbnails || !stores) {
        return;
    }
    name_thumbs(pipeline, pair);
    std::string reason;
    for (const std::string* file : {&pair.left_thumb, &pair.right_thumb}) {
        if (pipeline.inputs.holds(*file)) {
            pipeline.voice.tell_everywhere("   " + printable(*file) + ": " +
                                           input_of_run_text(pipeline.voice.messages()) + '\n');
            return;
        }
        if (!make_folders(folder_of(*file), reason)) {
            pipeline.voice.print("\n Cannot create subdir: " + printable(folder_of(*file)) + " (" + reason +
                                 ")\n");
            return;
        }
    }
    reason =
        value_or_end(pipeline.voice, save_thumbs(pipeline.warped.pair(), pair.left_thumb, pair.right_thumb));
    if (!reason.empty()) {
        pipeline.voice.tell_everywhere("   " + printable(reason) + '\n');
        return;
    }
    pair.picture_tag = thumb_tag(pair.left_thumb, pair.right_thumb, p.path_of_images);
}

}  // namespace zemora

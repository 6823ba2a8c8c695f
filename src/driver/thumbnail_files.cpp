#include "driver/thumbnail_files.h"

#include "platform/paths.h"
#include "render/thumbnails.h"
#include "report/picture_tags.h"

namespace zemora {

namespace {

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

bool stores_products(const ParameterSet& p) {
    return p.left_right_output != 0 || p.stereo_output != 0 || p.anaglyph_output != 0 || p.extra_output != 0;
}

void store_thumbnails(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    if (pair.html_images != setting::html_images::thumbnails || (!stores_products(p) && !pair.frame)) {
        return;
    }
    name_thumbs(pipeline, pair);
    std::string reason;
    for (const std::string* file : {&pair.left_thumb, &pair.right_thumb}) {
        if (pipeline.inputs.holds(*file)) {
            pair.notes.tell_everywhere("   " + printable(*file) + ": " +
                                       input_of_run_text(pair.notes.messages()) + '\n');
            return;
        }
        if (!make_folders(folder_of(*file), reason)) {
            pair.notes.print("\n Cannot create subdir: " + printable(folder_of(*file)) + " (" + reason +
                             ")\n");
            return;
        }
    }
    reason = save_thumbnails(pair.mounted.finished.thumbnails, pair.left_thumb, pair.right_thumb);
    if (!reason.empty()) {
        pair.notes.tell_everywhere("   " + printable(reason) + '\n');
        return;
    }
    pair.picture_tag = thumb_tag(pair.left_thumb, pair.right_thumb, p.path_of_images);
}

}  // namespace zemora

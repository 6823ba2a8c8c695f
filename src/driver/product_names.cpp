#include "driver/product_names.h"

#include <algorithm>

#include "driver/file_kinds.h"
#include "platform/directory_walk.h"
#include "platform/paths.h"
#include "report/window_judgement.h"

namespace zemora {

namespace {

std::string output_root(const ParameterSet& parameters) {
    return join_path(parameters.path_of_images, parameters.path_of_output);
}

/// Names, suffixes and stamps as the run that mounted the pair had them; `silence` is not heard.
NamedPair named_pair_of(const ParameterSet& parameters, Notes& silence, bool two_files,
                        const MountedObject& object) {
    NamedPair pair;
    pair.two_files = two_files;
    pair.left_relative = relative_to(object.left, parameters.path_of_images);
    pair.right_relative =
        two_files ? relative_to(object.right, parameters.path_of_images) : pair.left_relative;
    const std::string left = checked_suffix(pair.left_relative, silence);
    const std::string right = checked_suffix(pair.right_relative, silence);
    const bool both_mpo = left == ".mpo" && right == ".mpo";
    pair.left_suffix = output_suffix(parameters, left, both_mpo, silence);
    pair.right_suffix = output_suffix(parameters, right, both_mpo, silence);
    pair.stamps.deviation = object.deviation;
    pair.stamps.projected_deviation = projected_deviation(parameters, object.image_ratio, object.deviation);
    return pair;
}

std::vector<OutputName> names_of_all_products(const ParameterSet& p, const NamedPair& pair) {
    struct Row {
        ProductKind kind;
        int wanted;
    };
    std::vector<OutputName> names;
    for (const Row& row :
         {Row{ProductKind::anaglyph, p.anaglyph_output}, Row{ProductKind::stereo, p.stereo_output},
          Row{ProductKind::extra, p.extra_output}}) {
        if (row.wanted != 0) {
            names.push_back(single_name(p, pair, row.kind, p.inverse_output != 0));
        }
    }
    if (p.left_right_output != 0) {
        const ProductNames views = view_names(p, pair, ProductKind::left, ProductKind::right);
        names.push_back(views.left);
        names.push_back(views.right);
    }
    return names;
}

}  // namespace

ProductNames view_names(const ParameterSet& p, const NamedPair& pair, ProductKind left_kind,
                        ProductKind right_kind) {
    const std::string root = output_root(p);
    std::string left_relative = pair.left_relative;
    std::string right_relative = pair.right_relative;
    const bool common = pair.two_files && take_common_base(p, left_relative, right_relative);
    if (pair.two_files) {  // the right product stands beside the left one, wherever its view comes from
        const std::string folder = folder_of(left_relative);
        const std::string name = bare_name_of(right_relative);
        right_relative = folder.empty() ? name : path_in(folder, name);
    }
    ProductNames names{output_path(p, root, left_relative, left_kind, pair.index, pair.left_suffix),
                       output_path(p, root, right_relative, right_kind, pair.index, pair.right_suffix)};
    stamp_name(names.left, p, pair.stamps);
    stamp_name(names.right, p, pair.stamps);
    if (wants_combined_name(p, pair.two_files, common)) {
        const OutputName right = names.right;
        combine_names(names.left, right);
        names.right = output_path(p, root, left_relative, right_kind, pair.index, pair.right_suffix);
        stamp_name(names.right, p, pair.stamps);
        combine_names(names.right, right);
    }
    if (pair.frame) {
        number_frame(names.left, p, left_kind, *pair.frame);
        number_frame(names.right, p, right_kind, *pair.frame);
    }
    return names;
}

OutputName single_name(const ParameterSet& p, const NamedPair& pair, ProductKind kind, bool inverse_output) {
    OutputName name = view_names(p, pair, kind, kind).left;
    if (kind == ProductKind::anaglyph && p.planetarium_output == 1) {
        name.suffix = ".tif";  // a dome image is always a TIFF
    }
    if (kind == ProductKind::extra) {
        add_extra_ending(name, p.extra_output, inverse_output);
    }
    return name;
}

double projected_deviation(const ParameterSet& parameters, double image_ratio, double deviation) {
    const double projection_ratio =
        std::max(projected_ratio(parameters.projection_ratio, image_ratio), image_ratio);
    return image_ratio / projection_ratio * deviation;
}

void give_away_mounted_names(const ParameterSet& parameters, const Notes& notes, const ImageList& list,
                             GivenNames& given) {
    if (parameters.stamp_files >= setting::stamp_files::time) {
        return;
    }
    const int quiet = 0;
    KeptNotes silence(notes.messages(), quiet);
    int open = 0;
    for (const MountedObject& object : list.mounted) {
        for (; open < object.objects_before; ++open) {
            MountedObject unknown;
            unknown.left = list.left(open);
            unknown.right = list.right(open);
            const NamedPair pair = named_pair_of(parameters, silence, list.two_files, unknown);
            for (const OutputName& name : names_of_all_products(parameters, pair)) {
                given.note_open(name);
            }
        }
        const NamedPair pair = named_pair_of(parameters, silence, list.two_files, object);
        for (const OutputName& name : names_of_all_products(parameters, pair)) {
            given.close(name, object.has_values);
        }
    }
}

}  // namespace zemora

#include "input/image_list.h"

#include "platform/paths.h"

namespace zemora {

ImageList build_image_list(const ParameterSet& parameters, const Voice& /*voice*/) {
    ImageList list;
    list.two_files = parameters.stereo_image_input == 2 || parameters.stereo_image_input == 5;
    if (parameters.input_mode != 0) {
        return list;
    }
    ImageObject object;
    const auto complete = [&](const std::string& name) { return join_path(parameters.path_of_images, name); };
    if (list.two_files) {
        object.left = complete(parameters.left_file_name);
        object.right = complete(parameters.right_file_name);
    } else {
        object.stereo = complete(parameters.stereo_file_name);
    }
    list.objects.push_back(object);
    return list;
}

}  // namespace zemora

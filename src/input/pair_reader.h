#pragma once
/// Reads the views of a pair from its files.

#include <functional>
#include <string>

#include "config/setting_values.h"
#include "input/image_list.h"
#include "input/picture_file.h"
#include "input/view_source.h"

namespace zemora {

/// Files of one pair; for stereo input `stereo` alone.
struct PairFiles {
    std::string left;
    std::string right;
    std::string stereo;
};

/// Finds the depth image of a photo with depth data.
using FindPhoneDepth = std::function<LoadedPicture(const std::string& photo, Notes& notes)>;

struct PairReadOptions {
    int stereo_image_input = setting::stereo_image_input::two_files;  ///< How the files hold the views.
    bool keeps_cut_pictures =
        false;                      ///< The pictures of a multi-picture file are left as files of their own.
    bool has_view_folders = false;  ///< They go beside the folder s, as `InputMode` 9 has its folders.
    std::string converter;          ///< Program for formats that are not read here.
    FindPhoneDepth find_phone_depth;  ///< Has to be callable from the thread that reads.
};

/// Both views, read at the same time. Fails for the pair.
[[nodiscard]] Result<RawViews> read_pair(const PairFiles& files, const PairReadOptions& options,
                                         Notes& notes);

[[nodiscard]] PairFiles files_of(const ImageList& list, int object);

/// The objects of a list.
class PairFileSource : public ViewSource {
public:
    PairFileSource(const ImageList& list, PairReadOptions options)
        : list_(list), options_(std::move(options)) {}
    [[nodiscard]] Result<RawViews> read(int number, Notes& notes) override {
        return read_pair(files_of(list_, number), options_, notes);
    }

private:
    const ImageList& list_;
    PairReadOptions options_;
};

}  // namespace zemora

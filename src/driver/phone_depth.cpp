#include "driver/phone_depth.h"

#include <FreeImage.h>

#include <algorithm>
#include <string_view>

#include "numerics/bitmap_file.h"
#include "platform/move_file.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

constexpr int kInvert = 255;

/// Apple keeps pictures of other kinds in the same place.
bool is_gain_map(const std::vector<std::uint8_t>& file) {
    constexpr std::string_view kMark = "aux:hdrgainmap";
    return std::search(file.begin(), file.end(), kMark.begin(), kMark.end()) != file.end();
}

LoadedPicture failed(const std::string& reason) {
    return {LoadStatus::unreadable, {}, reason};
}

LoadedPicture without_depth(const Voice& voice) {
    const std::string text = voice.messages().text<Msg::img_input_no_depth_mask_in_image>();
    voice.print(text + '\n');
    voice.wait(WaitAbove::error);
    return failed(text.substr(0, text.find('\n')));
}

/// Puts the depth image into its place, upright as the photo.
LoadedPicture keep(ExifTool& exiftool, const std::string& photo, LoadedPicture&& depth,
                   const std::string& problem) {
    if (!problem.empty()) {
        return failed(problem);
    }
    exiftool.copy_orientation(photo, kept_depth_name(photo));
    return std::move(depth);
}

std::string make_folder_of(const std::string& path) {
    std::string reason;
    return make_folders(folder_of(path), reason) ? std::string() : reason;
}

LoadedPicture read_apple(ExifTool& exiftool, const std::string& photo, const Voice& voice) {
    const std::vector<std::uint8_t> file = exiftool.read_binary(photo, "MPImage2");
    if (file.empty() || is_gain_map(file)) {
        return without_depth(voice);
    }
    const std::string kept = kept_depth_name(photo);
    LoadedPicture depth = decode_picture(file, kept);
    if (depth.status != LoadStatus::done) {
        return depth;
    }
    std::string problem = make_folder_of(kept);
    if (problem.empty()) {
        problem = write_file_whole(kept, file);
    }
    return keep(exiftool, photo, std::move(depth), problem);
}

/// Samsung's map is dark near.
LoadedPicture read_samsung(ExifTool& exiftool, const std::string& photo, const Voice& voice) {
    const std::vector<std::uint8_t> file = exiftool.read_binary(photo, "DepthMapTiff");
    if (file.empty()) {
        return without_depth(voice);
    }
    const std::string kept = kept_depth_name(photo);
    LoadedPicture depth = decode_picture(file, kept);
    if (depth.status != LoadStatus::done) {
        return depth;
    }
    const Picture picture = depth.bitmap.picture();
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* row = picture.row(y);
        std::transform(row, row + kPixelBytes * picture.width, row,
                       [](std::uint8_t value) { return static_cast<std::uint8_t>(kInvert - value); });
    }
    std::string problem = make_folder_of(kept);
    if (problem.empty()) {
        problem = encode_and_write(depth.bitmap.handle(), FIF_JPEG, JPEG_DEFAULT, kept);
    }
    return keep(exiftool, photo, std::move(depth), problem);
}

/// A depth image that somebody put beside the photo moves to its place; an earlier run may have done so.
LoadedPicture read_beside(const std::string& photo, const Voice& voice) {
    const std::string kept = kept_depth_name(photo);
    const std::string beside = join_path(folder_of(photo), bare_name_of(kept));
    if (!file_exists(beside)) {
        return file_exists(kept) ? load_picture(kept)
                                 : failed(format_text(voice.messages().either("there is no depth image %s",
                                                                              "das Tiefenbild %s fehlt"),
                                                      beside.c_str()));
    }
    LoadedPicture depth = load_picture(beside);
    if (depth.status == LoadStatus::done && !file_exists(kept) && make_folder_of(kept).empty()) {
        (void)move_without_replacing(beside, kept);
    }
    return depth;
}

}  // namespace

std::string kept_depth_name(const std::string& photo) {
    return join_path(folder_of(photo), "cd/" + without_suffix(bare_name_of(photo)) + "_D.jpg");
}

LoadedPicture read_phone_depth(ExifTool& exiftool, const std::string& photo, const Voice& voice) {
    const std::string maker = exiftool.read_maker(photo);
    if (maker.find("Apple") != std::string::npos) {
        return read_apple(exiftool, photo, voice);
    }
    if (maker.find("samsung") != std::string::npos) {
        return read_samsung(exiftool, photo, voice);
    }
    return read_beside(photo, voice);
}

}  // namespace zemora

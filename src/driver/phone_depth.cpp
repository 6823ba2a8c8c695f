#include "driver/phone_depth.h"

#include <algorithm>
#include <string_view>

#include "codec/encode.h"
#include "platform/move_file.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

bool is_gain_map(const std::vector<std::uint8_t>& file) {
    constexpr std::string_view kMark = "aux:hdrgainmap";
    return std::search(file.begin(), file.end(), kMark.begin(), kMark.end()) != file.end();
}

void invert(Picture picture) {
    constexpr int kWhite = 255;
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* row = picture.row(y);
        std::transform(row, row + kPixelBytes * picture.width, row,
                       [](std::uint8_t value) { return static_cast<std::uint8_t>(kWhite - value); });
    }
}

LoadedPicture failed(const std::string& reason) {
    return {LoadStatus::unreadable, {}, reason};
}

LoadedPicture without_depth(Notes& notes) {
    const std::string text = notes.messages().text<Msg::img_input_no_depth_mask_in_image>();
    notes.print(text + '\n');
    notes.wait(Severity::error);
    return failed(text.substr(0, text.find('\n')));
}

/// Puts the depth image into its place, upright as the photo. `write` gives the reason of its failure.
template <class Write>
LoadedPicture keep(ExifTool& exiftool, const std::string& photo, LoadedPicture&& depth, Notes& notes,
                   const Write& write) {
    const std::string kept = kept_depth_name(photo);
    std::string problem;
    if (make_folders(folder_of(kept), problem)) {
        problem = write(kept);
    }
    if (!problem.empty()) {
        return failed(problem);
    }
    exiftool.copy_orientation(photo, kept, notes);
    return std::move(depth);
}

/// Apple's second picture, which may be of another kind.
LoadedPicture read_apple(ExifTool& exiftool, const std::string& photo, Notes& notes) {
    const std::vector<std::uint8_t> file = exiftool.read_binary(photo, "MPImage2", notes);
    if (file.empty() || is_gain_map(file)) {
        return without_depth(notes);
    }
    LoadedPicture depth = decode_picture(file, photo);
    if (depth.status != LoadStatus::done) {
        return depth;
    }
    return keep(exiftool, photo, std::move(depth), notes,
                [&](const std::string& kept) { return write_file_whole(kept, file); });
}

/// Samsung's map is dark near.
LoadedPicture read_samsung(ExifTool& exiftool, const std::string& photo, Notes& notes) {
    const std::vector<std::uint8_t> file = exiftool.read_binary(photo, "DepthMapTiff", notes);
    if (file.empty()) {
        return without_depth(notes);
    }
    LoadedPicture depth = decode_picture(file, photo);
    if (depth.status != LoadStatus::done) {
        return depth;
    }
    invert(depth.bitmap.picture());
    const Bitmap& picture = depth.bitmap;
    return keep(exiftool, photo, std::move(depth), notes, [&picture](const std::string& kept) {
        return encode_and_write(picture, {PictureFormat::jpeg}, kept);
    });
}

/// A depth image that somebody put beside the photo moves to its place; an earlier run may have done so.
LoadedPicture read_beside(const std::string& photo, Notes& notes) {
    const std::string kept = kept_depth_name(photo);
    const std::string beside = join_path(folder_of(photo), bare_name_of(kept));
    if (!file_exists(beside)) {
        return file_exists(kept)
                   ? load_picture(kept)
                   : failed(format_text(
                         notes.messages().either({"there is no depth image %s", "das Tiefenbild %s fehlt"}),
                         beside.c_str()));
    }
    LoadedPicture depth = load_picture(beside);
    std::string reason;
    if (depth.status == LoadStatus::done && !file_exists(kept) && make_folders(folder_of(kept), reason)) {
        (void)move_without_replacing(beside, kept);
    }
    return depth;
}

}  // namespace

std::string kept_depth_name(const std::string& photo) {
    return join_path(folder_of(photo), "cd/" + without_suffix(bare_name_of(photo)) + "_D.jpg");
}

LoadedPicture read_phone_depth(ExifTool& exiftool, const std::string& photo, Notes& notes) {
    const std::string maker = exiftool.read_maker(photo, notes);
    if (maker.find("Apple") != std::string::npos) {
        return read_apple(exiftool, photo, notes);
    }
    if (maker.find("samsung") != std::string::npos) {
        return read_samsung(exiftool, photo, notes);
    }
    return read_beside(photo, notes);
}

}  // namespace zemora

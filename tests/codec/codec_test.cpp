#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "codec/decode.h"
#include "codec/encode.h"
#include "tests/support/pictures.h"

namespace zemora {
namespace {

using FileBytes = std::vector<std::uint8_t>;

FileBytes file_of(const Bitmap& picture, const EncodeOptions& options) {
    const EncodedPicture file(picture, options);
    return {file.bytes().begin(), file.bytes().end()};
}

TEST(PictureFormat, IsThatOfTheContentElseOfTheSuffix) {
    const Bitmap picture = test::place_picture(64, 48);
    for (const char* name :
         {"a.bmp", "a.jpe", "a.png", "a.tif", "a.ppm", "a.webp", "a.jp2", "a.psd", "a.jng"}) {
        const PictureFormat format = format_of_name(name);
        ASSERT_NE(format, PictureFormat::unknown) << name;
        EXPECT_EQ(format_of_file(file_of(picture, {format}), "a.nef"), format) << name;
    }
    EXPECT_EQ(format_of_file({}, "a.nef"), PictureFormat::raw);
    EXPECT_EQ(format_of_name("a.pbm"), PictureFormat::ppm);
    EXPECT_EQ(format_of_name("a.exr"), PictureFormat::unknown);
    EXPECT_TRUE(is_decoded(PictureFormat::ppm));
    EXPECT_FALSE(is_decoded(PictureFormat::webp));
    EXPECT_FALSE(is_decoded(PictureFormat::unknown));
}

TEST(EncodedPicture, HasTheChromaThatWasAskedFor) {
    const Bitmap picture = test::place_picture(64, 48);
    struct Row {
        Chroma chroma;
        int factors;  ///< Horizontal and vertical of the brightness, a digit each.
    };
    for (const Row& row : {Row{Chroma::quarter, 0x22}, Row{Chroma::half, 0x21}, Row{Chroma::full, 0x11}}) {
        const FileBytes file = file_of(picture, {.format = PictureFormat::jpeg, .chroma = row.chroma});
        static constexpr std::uint8_t kFrame[] = {0xFF, 0xC0};
        const auto frame = std::search(file.begin(), file.end(), std::begin(kFrame), std::end(kFrame));
        ASSERT_GT(file.end() - frame, 11);
        EXPECT_EQ(frame[11], row.factors);
    }
}

TEST(EncodedPicture, IsSmallerPackedOrOfLessQuality) {
    const Bitmap picture = test::place_picture(64, 48);
    for (const PictureFormat format : {PictureFormat::png, PictureFormat::tiff}) {
        EXPECT_LT(file_of(picture, {.format = format, .compress = true}).size(),
                  file_of(picture, {.format = format}).size());
    }
    for (const PictureFormat format : {PictureFormat::jpeg, PictureFormat::webp, PictureFormat::jng}) {
        EXPECT_LT(file_of(picture, {.format = format, .quality = 40}).size(),
                  file_of(picture, {format}).size());
    }
    EXPECT_TRUE(file_of(picture, {PictureFormat::unknown}).empty());
    EXPECT_TRUE(file_of(picture, {PictureFormat::gif}).empty()) << "it has no 24 bits";
    EXPECT_TRUE(file_of({}, {PictureFormat::bmp}).empty());
}

TEST(Decode, MessagesAndFaultsAreThoseOfTheOwnPicture) {
    const Bitmap picture = test::place_picture(64, 48);
    const FileBytes whole = file_of(picture, {PictureFormat::jpeg});
    const std::span cut = std::span(whole).first(whole.size() * 3 / 4);
    const std::string expected = decode(cut, PictureFormat::jpeg).messages;
    ASSERT_NE(expected, "");
    std::vector<std::string> faults(4);
    std::vector<std::thread> threads;
    for (std::string& fault : faults) {
        threads.emplace_back([&whole, &fault, cut, &expected] {
            for (int i = 0; i < 200; ++i) {
                const DecodedPicture damaged = decode(cut, PictureFormat::jpeg);
                const DecodedPicture good = decode(whole, PictureFormat::jpeg);
                if (damaged.messages != expected || !good.messages.empty() || !good.bitmap) {
                    fault = "\"" + damaged.messages + "\" and \"" + good.messages + "\"";
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(faults, std::vector<std::string>(4));
}

TEST(Decode, TellsTheSizeBeforeThePixelsAndWhatIsNotThere) {
    const FileBytes whole = file_of(test::place_picture(64, 48), {PictureFormat::bmp});
    EXPECT_EQ(size_in_header(whole, PictureFormat::bmp), (PictureSize{64, 48}));
    EXPECT_FALSE(decode(whole, PictureFormat::bmp).ran_out);
    const std::span cut = std::span(whole).first(whole.size() - 100);
    EXPECT_EQ(size_in_header(cut, PictureFormat::bmp), (PictureSize{64, 48}));
    EXPECT_TRUE(decode(cut, PictureFormat::bmp).ran_out);
    EXPECT_EQ(size_in_header(std::span(whole).first(10), PictureFormat::bmp), PictureSize{});
    EXPECT_FALSE(decode(whole, PictureFormat::png).bitmap);
    EXPECT_EQ(exif_text(whole, PictureFormat::bmp, "DateTimeOriginal"), "");
}

}  // namespace
}  // namespace zemora

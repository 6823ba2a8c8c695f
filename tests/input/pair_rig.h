#pragma once
/// A pair on files of its own, for the tests of what happens between file and view.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "input/file_selection.h"
#include "input/pair_reader.h"
#include "input/view_preparer.h"
#include "platform/paths.h"
#include "tests/support/pictures.h"
#include "tests/support/speech.h"
#include "tests/support/test_folder.h"

namespace zemora::test {

/// What became of the files of a pair.
enum class ReadResult { done, unreadable, converted, ends_run };

/// The way of pairs with the same options from file to view.
struct TestPair {
    TestPair(const PairReadOptions& reading_in, const PrepareOptions& preparing_in)
        : reading(reading_in), preparer(preparing_in) {}

    PairReadOptions reading;
    ViewPreparer preparer;
    ViewOrders orders;
    InputViews views;
    Failure problem;

    [[nodiscard]] StereoPicture full() const { return views.full(); }
    [[nodiscard]] int width() const { return views.width(); }
    [[nodiscard]] int height() const { return views.height(); }
    [[nodiscard]] const std::string& failure() const { return problem.note.text; }

    ReadResult read(const PairFiles& files, Notes& notes) {
        preparer.take_back(std::move(views));
        Result<RawViews> raw = read_pair(files, reading, notes);
        if (!raw) {
            problem = raw.failure();
            return ReadResult::unreadable;
        }
        const bool converted = raw->converted;
        Result<InputViews> prepared = preparer.prepare(*std::move(raw), orders, notes);
        if (!prepared) {
            problem = prepared.failure();
            return ReadResult::ends_run;
        }
        views = *std::move(prepared);
        return converted ? ReadResult::converted : ReadResult::done;
    }
};

/// The options of pairs and the folder of their files; what is told goes to `told`.
struct Rig : Speech {
    TestFolder folder;
    PairReadOptions reading;
    PrepareOptions preparing;
    std::string told;

    Rig() {
        parameters.stop_at_error = 0;
        preparing.frame.colour = {0, 0, 200};
    }
    void save(const char* name, const Bitmap& picture) const {
        const auto bytes = encoded(picture, FIF_BMP);
        write_text(folder / name, {bytes.begin(), bytes.end()});
    }
    std::unique_ptr<TestPair> pair_of(int stereo_image_input) {
        reading.stereo_image_input = stereo_image_input;
        return std::make_unique<TestPair>(reading, preparing);
    }
    ReadResult read(TestPair& pair) {
        const bool two = takes_two_files(pair.reading.stereo_image_input);
        const bool swaps = pair.orders.exchanged;
        pair.orders.mask_stems = two ? MaskStems{folder / (swaps ? "r" : "l"), folder / (swaps ? "l" : "r")}
                                     : MaskStems{folder / "s_l", folder / "s_r"};
        return read(pair, {folder / "l.bmp", folder / "r.bmp", folder / "s.bmp"});
    }
    ReadResult read(TestPair& pair, const PairFiles& files) {
        testing::internal::CaptureStdout();
        const ReadResult result = pair.read(files, voice);
        console.flush();
        told = testing::internal::GetCapturedStdout();
        return result;
    }
};

}  // namespace zemora::test

#include "report/analysis_dump.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include "codec/library.h"
#include "config/voice.h"
#include "platform/child_process.h"
#include "tests/analysis/texture_pair.h"

namespace zemora {
namespace {

namespace fs = std::filesystem;
using testing::Displacement;
using testing::TexturePair;

std::string text_of(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// Folders whose names try the files that mention them, and what was told on the console.
class Dumps : public ::testing::Test {
protected:
    Dumps() {
        fs::create_directories(root / "images");
        fs::create_directories(root / "program");
        options.working_folder = root;
        options.image_folder = root / "images";
        options.program_folder = root / "program";
        dump.emplace(options, voice);
        (void)!std::freopen("/dev/null", "r", stdin);
    }
    ~Dumps() override { fs::remove_all(root); }

    void want(AnalysePhase phase) {
        options.surface_phase = options.segment_phase = options.table_phase = static_cast<int>(phase);
        dump.emplace(options, voice);
    }
    template <class Act>
    std::string told(Act act) {
        ::testing::internal::CaptureStdout();
        act();
        console.flush();
        return ::testing::internal::GetCapturedStdout();
    }

    const fs::path root = fs::path(::testing::TempDir()) / ("dump \"it's\" " + std::to_string(getpid()));
    ParameterSet parameters;
    Console console;
    MessageCatalogue messages{Language::english};
    Voice voice{console, messages, parameters};
    AnalysisDumpOptions options;
    std::optional<AnalysisDump> dump;
};

ErrorSurface surface_of(int rows, int columns, const std::function<float(int, int)>& error) {
    ErrorSurface surface;
    surface.reshape({0, 0, 9, 9, rows - 1, columns - 1, 1, 1, 0, 0});
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < columns; ++j) {
            surface.set(i, j, error(i, j));
        }
    }
    return surface;
}

TEST_F(Dumps, ChangeNoResultAndFollowTheOrderOfTheCells) {
    const TexturePair pair(420, 300, [](double x, double y) {
        return Displacement{-5.0 + x / 60.0, y / 90.0};
    });
    AnalysisState plain(testing::analysis_options());
    AnalysisState open(testing::analysis_options());
    open.visitor = &*dump;
    for (const AnalysePhase phase :
         {AnalysePhase::shift, AnalysePhase::first_grid, AnalysePhase::geometry, AnalysePhase::disparity}) {
        want(phase);
        const PhaseRequest request{phase, 1, false, true};
        const AnalyseStatus status = analyse_phase(plain, pair.pictures(), request, {});
        const std::string lines =
            told([&] { EXPECT_EQ(analyse_phase(open, pair.pictures(), request, {}), status); });
        EXPECT_EQ(open.dx, plain.dx);
        EXPECT_EQ(open.dy, plain.dy);
        EXPECT_TRUE(open.contrast == plain.contrast && open.sharpness_x == plain.sharpness_x &&
                    open.sharpness_y == plain.sharpness_y && open.sharpness == plain.sharpness &&
                    open.ambiguity == plain.ambiguity && open.match_error == plain.match_error &&
                    open.valid == plain.valid && open.valid_disparity == plain.valid_disparity &&
                    open.cell_course == plain.cell_course)
            << "phase " << static_cast<int>(phase);
        EXPECT_EQ(open.disparity.near_point, plain.disparity.near_point);
        std::vector<std::string> names;
        std::istringstream words(lines);
        for (std::string word; words >> word;) {
            if (word.starts_with("segment_") && word.ends_with(".dat")) {
                names.push_back(word);
            }
        }
        EXPECT_EQ(phase == AnalysePhase::disparity, names.empty());
        EXPECT_TRUE(phase != AnalysePhase::first_grid || std::is_sorted(names.begin(), names.end()));
    }
    for (const char* name : {"segment_01_68_68.dat", "segment_01_200_200.gpl", "segment_02_02_02.dat",
                             "segment_03_09_09.gpl", "images/segment_05_15_15.gnu",
                             "images/segment_01_200_200_00_r.jpg", "images/segment_05_00_15_02_l.jpg"}) {
        EXPECT_TRUE(fs::exists(root / name)) << name;
    }
    // The reverse profile of a cell has its minimum where the other direction has it, negated.
    std::istringstream profile(text_of(root / "images/segment_05_08_08.dat"));
    const std::vector<float> errors(std::istream_iterator<float>(profile), {});
    ASSERT_EQ(errors.size(), 305U);
    const auto best = std::min_element(errors.begin(), errors.end()) - errors.begin();
    EXPECT_NEAR(static_cast<float>(152 - best), plain.dx[8][8], 2.0F);
}

TEST_F(Dumps, SurfacesAreNegatedAndProfilesAreNot) {
    const std::string lines = told([&] {
        dump->write_error_surface(surface_of(2, 2, [](int i, int j) { return i == 0 ? 0.0F : 12.345F + j; }),
                                  {AnalysePhase::geometry, 4, 7});
        dump->write_error_profile(surface_of(1, 2, [](int, int j) { return 7.5F * j; }),
                                  {AnalysePhase::disparity, 0, 12});
    });
    EXPECT_EQ(text_of(root / "segment_03_04_07.dat"), "      0.00       0.00 \n    -12.35     -13.35 \n");
    EXPECT_EQ(text_of(root / "images/segment_05_00_12.dat"), "      0.00\n      7.50\n");
    EXPECT_EQ(lines,
              "\nFile segment_03_04_07.dat will be created.\n\nFile segment_03_04_07.gpl will be created.\n");
    fs::remove_all(root);
    EXPECT_NE(told([&] {
                  dump->write_error_profile(surface_of(1, 1, [](int, int) { return 1.0F; }), {});
              }).find("\nstereo_analyse::write_errors_1dim: File "),
              std::string::npos);
}

TEST_F(Dumps, GnuplotShowsEverySurfaceAndEndsWithItsInput) {
    const auto bowl = [](int i, int j) { return static_cast<float>((i - 4) * (i - 4) + (j - 3) * (j - 3)); };
    const auto edged = [&](int i, int j) { return j > 6 ? kNoOverlap : bowl(i, j); };
    const auto none = [](int, int) { return kNoOverlap; };
    const auto flat = [](int, int) { return 3.0F; };
    int number = 0;
    for (const std::function<float(int, int)>& error :
         {std::function<float(int, int)>(bowl), {edged}, {none}, {flat}}) {
        (void)told([&] {
            dump->write_error_surface(surface_of(9, 10, error), {AnalysePhase::geometry, 0, number});
            dump->write_error_profile(surface_of(1, 10, error), {AnalysePhase::disparity, 0, number});
        });
        const std::string cell = "_00_0" + std::to_string(number++);
        for (const auto& [folder, file] : {std::pair(root, "segment_03" + cell + ".gpl"),
                                           std::pair(root / "images", "segment_05" + cell + ".gnu")}) {
            const ChildResult result = run_child(
                {"sh", "-c", "cd \"$1\" && { echo set terminal dumb; cat \"$2\"; } > all && gnuplot all 2>&1",
                 "sh", folder, file});
            const std::string output(result.output.begin(), result.output.end());
            EXPECT_EQ(result.exit_code, 0) << file << output;
            EXPECT_EQ(output.find("all\""), std::string::npos) << output;
            EXPECT_EQ(output.find("arning"), std::string::npos) << output;
            EXPECT_EQ(output.find("e+0"), std::string::npos) << "no overlap stretches the axis\n" << output;
        }
    }
}

/// Red of a pixel of a JPEG file, -1 when it cannot be read.
int red_at(const fs::path& file, int x, int y) {
    const Bitmap piece = LibraryBitmap::owner(FreeImage_Load(FIF_JPEG, file.c_str()));
    return piece ? piece.picture().pixel(x, y)[2] : -1;
}

TEST_F(Dumps, PiecesShowTheTileAndItsPlaceInTheOtherView) {
    const TexturePair pair(
        200, 100, [](double, double) { return Displacement{}; }, 8.0);
    const AnalysisState state(testing::analysis_options());
    const MeasuredPair measured(state, pair.pictures());
    const auto left = [&](int x, int y) { return pair.left.picture().pixel(x, y)[2]; };
    const auto right = [&](int x, int y) { return pair.right.picture().pixel(x, y)[2]; };
    constexpr int kNear = 6;  // what the encoding may change
    dump->write_segment_images(measured, {AnalysePhase::disparity, 3, 2},
                               {100, 20, 51, 51, 0, 304, 1, 1, 0, 0}, 60.5F, 0.0F);
    const std::string name = root / "images/segment_05_03_02_0";
    EXPECT_NEAR(red_at(name + "0_l.jpg", 10, 20), left(110, 40), kNear);
    EXPECT_NEAR(red_at(name + "0_r.jpg", 10, 20), right(171, 40), kNear);
    EXPECT_NEAR(red_at(name + "0_r.jpg", 45, 20), 0, kNear) << "outside the view";
    EXPECT_NEAR(red_at(name + "1_l.jpg", 10, 20), left(50, 40), kNear);
    EXPECT_NEAR(red_at(name + "1_r.jpg", 10, 20), right(110, 40), kNear);
    EXPECT_NEAR(red_at(name + "2_r.jpg", 152, 50), right(100, 70), kNear);
    EXPECT_NEAR(red_at(name + "2_l.jpg", 40, 50), 0, kNear);
    dump->write_segment_images(measured, {AnalysePhase::first_grid, 0, 1},
                               {10, 5, 16, 33, 16, 33, 2, 2, -4, 2}, -3.5F, 4.5F);
    EXPECT_NEAR(red_at(root / "images/segment_02_00_01_00_r.jpg", 20, 3), right(27, 13), kNear);
    EXPECT_FALSE(fs::exists(root / "images/segment_02_00_01_01_r.jpg"));
}

TEST_F(Dumps, TheViewerGetsFolderAndPhaseAndItsAnswerCountsNothing) {
    AnalysisState state(testing::analysis_options());
    state.dx[1][2] = -10.5F;
    state.dy[1][2] = 3.5F;
    state.valid[1][2] = 1;
    dump->show_segments(state, AnalysePhase::first_grid);
    EXPECT_NE(text_of(root / "images/zemora_segment_data.txt").find("\n 1  2  -10    4 1\n"),
              std::string::npos);
    const fs::path viewer = root / "program/zemora_segment_viewer";
    std::ofstream(viewer) << "#!/bin/sh\nprintf '%s|' \"$@\" > \"$1/seen\"\nexit 3\n";
    fs::permissions(viewer, fs::perms::owner_all);
    dump->show_segments(state, AnalysePhase::disparity);
    EXPECT_EQ(text_of(root / "images/seen"), options.image_folder + "|5|0|");
}

TEST_F(Dumps, TablesStandOnTheConsoleAndAtTheEndOfTheFile) {
    AnalysisState state(testing::analysis_options());
    state.sharpness_x[2][0] = 0.49F;
    state.sharpness_x[0][1] = 0.5F;
    state.match_error[0][0] = 10001;
    state.dy[0][0] = -2.25F;
    state.valid[0][0] = 1;
    want(AnalysePhase::first_grid);
    const std::string lines = told([&] { dump->visit_phase(state, AnalysePhase::first_grid, true); });
    const std::string text = text_of(root / "analyse_file_02.dat");
    EXPECT_EQ(lines, text + std::string(kWaitingLine) + "\n");
    EXPECT_NE(text.find("\nQualitaet QX:\n-------------\n        0       1       2   \n" +
                        std::string(95, '-') + "\n  2 |(  0.49)(  0.00)(  0.00)\n"),
              std::string::npos);
    EXPECT_NE(text.find("  0 |(  0.00)   0.50 (  0.00)\nindividuelle Schwelle: QX_Level   = 0.50\n"),
              std::string::npos);
    EXPECT_NE(text.find("  0 |( 10001)      0       0 \nindividuelle Schwelle: QV_Level   = 10000\n"),
              std::string::npos);
    EXPECT_NE(text.find("  0 |  -2.25 (  0.00)(  0.00)\n"), std::string::npos);
    dump->set_pair("a.jpg", "b.jpg", voice);
    dump->visit_phase(state, AnalysePhase::shift, true);
    EXPECT_EQ(text_of(root / "analyse_file_02.dat"), text) << "heads belong to phase 1";
    want(AnalysePhase::shift);
    dump->set_pair("a.jpg", "b.jpg", voice);
    dump->visit_phase(state, AnalysePhase::shift, true);
    EXPECT_EQ(text_of(root / "analyse_file_02.dat"), text + "analysis for files: a.jpg, b.jpg\n");
    EXPECT_EQ(text_of(root / "analyse_file_03.dat"), "analysis for files: a.jpg, b.jpg\n");
    want(AnalysePhase::geometry);
    (void)told([&] {
        dump->visit_pass(state, 2);
        dump->visit_phase(state, AnalysePhase::geometry, true);
    });
    const std::string geometry = text_of(root / "analyse_file_03.dat");
    EXPECT_NE(geometry.find("\nBeginn Output Try: 2\n\nDONE:\n-----\n"), std::string::npos);
    EXPECT_NE(geometry.find("QV_Level   = 2500\n"), std::string::npos);
}

}  // namespace
}  // namespace zemora

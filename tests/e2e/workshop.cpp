#include "tests/e2e/workshop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "input/picture_file.h"
#include "platform/child_process.h"
#include "tests/support/pictures.h"

namespace zemora::test {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;

Views render(const SceneOptions& options, const SceneErrors& errors) {
    const Scene scene(options, errors);
    return {scene.render_left(), scene.render_right(), errors};
}

int grey(ConstPicture picture, int x, int y) {
    const std::uint8_t* p = picture.pixel(x, y);
    return p[0] + 2 * p[1] + p[2];
}

constexpr int kBlock = 17;  // pixels a side

double block_distance(ConstPicture left, int x, int y, ConstPicture right, int rx, int ry) {
    double sum = 0.0;
    for (int j = 0; j < kBlock; ++j) {
        for (int i = 0; i < kBlock; ++i) {
            const double d = grey(left, x + i, y + j) - grey(right, rx + i, ry + j);
            sum += d * d;
        }
    }
    return sum;
}

/// Vertical place of the best match of a block, to a part of a pixel; not a number at the end of the
/// reach.
double best_dy(ConstPicture left, ConstPicture right, int x, int y, int reach_px) {
    constexpr int kReachX = 50;
    const auto best_in_row = [&](int dy) {
        double best = std::numeric_limits<double>::max();
        for (int dx = -kReachX; dx <= kReachX; ++dx) {
            if (x + dx >= 0 && x + dx + kBlock <= right.width) {
                best = std::min(best, block_distance(left, x, y, right, x + dx, y + dy));
            }
        }
        return best;
    };
    std::vector<double> distances;
    for (int dy = -reach_px; dy <= reach_px; ++dy) {
        distances.push_back(best_in_row(dy));
    }
    const auto best = std::min_element(distances.begin(), distances.end());
    if (best == distances.begin() || best + 1 == distances.end()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double below = *(best - 1);
    const double above = *(best + 1);
    const double bend = below + above - 2.0 * *best;
    return static_cast<double>(best - distances.begin()) - reach_px +
           (bend > 0.0 ? 0.5 * (below - above) / bend : 0.0);
}

}  // namespace

Outcome Workshop::run(const std::vector<std::string>& arguments) const {
    std::vector<std::string> call{"sh",
                                  "-c",
                                  "cd \"$1\" && shift && exec 2>&1; " + before + ' ' + around,
                                  "sh",
                                  folder(),
                                  "timeout",
                                  "120",
                                  "env",
                                  "LC_ALL=C",
                                  "HOME=" + folder(),
                                  "TMPDIR=" + temporary_.path()};
    call.insert(call.end(), environment.begin(), environment.end());
    call.push_back(program);
    call.insert(call.end(), settings.begin(), settings.end());
    call.insert(call.end(), arguments.begin(), arguments.end());
    const ChildResult result = run_child(call);
    Outcome outcome{result.exit_code, {result.output.begin(), result.output.end()}};
    EXPECT_NE(outcome.exit_code, 124) << "does not end:\n" << outcome.text;
    if (is_killed) {
        for (const auto& entry : std::filesystem::directory_iterator(temporary_.path())) {
            std::filesystem::remove_all(entry.path());
        }
        return outcome;
    }
    EXPECT_TRUE(std::filesystem::is_empty(temporary_.path())) << "temporary files stay";
    for (const std::string& name : files()) {
        EXPECT_EQ(name.find(".zemora"), std::string::npos) << name << " stays";
    }
    return outcome;
}

void Workshop::become_ordinary_user(unsigned folder_permissions) {
    std::filesystem::permissions(folder(), std::filesystem::perms{folder_permissions});
    if (geteuid() == 0) {
        std::filesystem::permissions(temporary_.path(), std::filesystem::perms::all);
        around = "exec setpriv --reuid=65534 --regid=65534 --clear-groups \"$@\"";
    }
}

void Workshop::save(const std::string& name, ConstPicture picture) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    Bitmap bitmap = Bitmap::create(picture.width, picture.height);
    copy(picture, bitmap.picture());
    const FREE_IMAGE_FORMAT format = FreeImage_GetFIFFromFilename(name.c_str());
    const auto bytes = encoded(bitmap, format, format == FIF_JPEG ? 96 | JPEG_SUBSAMPLING_444 : 0);
    write_text(path(name), {bytes.begin(), bytes.end()});
}

void Workshop::write(const std::string& name, const std::string& text) const {
    write_text(path(name), text);
}

Bitmap Workshop::load(const std::string& name) const {
    LoadedPicture loaded = load_picture(path(name));
    EXPECT_EQ(loaded.status, LoadStatus::done) << name << ": " << loaded.reason;
    return std::move(loaded.bitmap);
}

const Views& misaligned_views() {
    static const Views views = [] {
        SceneOptions options;
        options.width = 900;
        options.height = 700;
        options.seed = 3;
        SceneErrors errors;
        errors.height_px = 8.0;
        errors.size = 0.01;
        errors.rotation_rad = 0.6 * kDegree;
        errors.vergence_v_rad = 0.3 * kDegree;
        errors.noise = 1.0;
        return render(options, errors);
    }();
    return views;
}

const Views& aligned_views() {
    static const Views views = [] {
        SceneOptions options;
        options.width = 400;
        options.height = 300;
        options.seed = 5;
        return render(options, {});
    }();
    return views;
}

void save_pair(const Workshop& workshop, const Views& views, const std::string& left,
               const std::string& right) {
    workshop.save(left, views.left.picture());
    workshop.save(right, views.right.picture());
}

double median_vertical_error(ConstPicture left, ConstPicture right, int reach_px) {
    constexpr int kColumns = 8;
    constexpr int kRows = 6;
    if (left.width != right.width || left.height != right.height) {
        return std::numeric_limits<double>::infinity();
    }
    std::vector<double> errors;
    for (int j = 0; j < kRows; ++j) {
        for (int i = 0; i < kColumns; ++i) {
            const int x = (left.width - kBlock) * (i + 1) / (kColumns + 1);
            const int y = reach_px + (left.height - kBlock - 2 * reach_px) * j / (kRows - 1);
            if (const double dy = best_dy(left, right, x, y, reach_px); !std::isnan(dy)) {
                errors.push_back(std::fabs(dy));
            }
        }
    }
    std::sort(errors.begin(), errors.end());
    return errors.size() < kColumns * kRows / 2 ? std::numeric_limits<double>::infinity()
                                                : errors[errors.size() / 2];
}

namespace {

/// Calls `take` with the difference of each channel; false when the sizes differ.
template <class Take>
bool for_each_difference(ConstPicture a, ConstPicture b, const Take& take) {
    if (a.width != b.width || a.height != b.height || a.width == 0) {
        return false;
    }
    for (int y = 0; y < a.height; ++y) {
        for (int i = 0; i < a.width * kPixelBytes; ++i) {
            take(std::abs(a.row(y)[i] - b.row(y)[i]));
        }
    }
    return true;
}

}  // namespace

int greatest_difference(ConstPicture a, ConstPicture b) {
    int greatest = 0;
    return for_each_difference(a, b, [&](int d) { greatest = std::max(greatest, d); }) ? greatest : 256;
}

double mean_difference(ConstPicture a, ConstPicture b) {
    double sum = 0.0;
    return for_each_difference(a, b, [&](int d) { sum += d; }) ? sum / a.width / a.height / kPixelBytes
                                                               : 256.0;
}

}  // namespace zemora::test

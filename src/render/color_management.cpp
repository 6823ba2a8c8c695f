#include "render/color_management.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>

#include "config/number_scan.h"
#include "config/text_lines.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "render/value_lines.h"

namespace zemora {

namespace {

constexpr int kChannels = 3;
constexpr float kUnread = -1.0F;         ///< What a value is before its line was read.
constexpr float kLowestElement = -0.5F;  ///< Below it an element counts as not given.
constexpr const char* kChannelNames[kChannels] = {"red", "grn", "blu"};

/// The lines of a file that hold data: no comments behind "%", no empty ones.
class DataLines {
public:
    explicit DataLines(std::span<const TextLine> lines) : lines_(lines) {}

    /// The next one; empty behind the last.
    std::string_view next() {
        while (!lines_.empty()) {
            const std::string_view line = trimmed(lines_.front().text);
            lines_ = lines_.subspan(1);
            if (!line.empty() && line.front() != '%') {
                return line;
            }
        }
        return {};
    }

private:
    std::span<const TextLine> lines_;
};

/// Reads and checks; the first fault stands.
class Reader {
public:
    Reader(const std::string& name, const MessageCatalogue& messages, DataLines lines)
        : name_(name), messages_(messages), lines_(lines) {}

    /// The first fault; nothing where the file is in order so far.
    [[nodiscard]] const std::optional<Failure>& failure() const { return failure_; }

    void read_matrix(ColorManagement::Matrix& matrix) {
        for (auto& row : matrix) {
            row.fill(kUnread);
            read_values(lines_.next(), std::span<float>(row));
        }
    }

    /// In the order of their names: all outputs of red, then of green, then of blue.
    void check_matrix(const ColorManagement::Matrix& matrix, const std::string& view) {
        for (std::size_t input = 0; input < kChannels; ++input) {
            for (std::size_t output = 0; output < kChannels; ++output) {
                const float element = matrix[output][input];
                if (element < kLowestElement) {
                    refuse("Matrixelement ungueltig: " + view + kChannelNames[input] + "->" +
                               kChannelNames[output] + " = " + number_text(element),
                           "invalid matrix element");
                }
            }
        }
    }

    void read_exponents(std::array<float, kChannels>& exponents) {
        exponents.fill(kUnread);
        read_values(lines_.next(), std::span<float>(exponents));
    }

    void check_exponents(const std::array<float, kChannels>& exponents, const std::string& name,
                         const char* meaning) {
        for (std::size_t c = 0; c < kChannels; ++c) {
            if (exponents[c] < 0.0F) {
                refuse(name + kChannelNames[c] + " = " + number_text(exponents[c]), meaning);
            }
        }
    }

    void read_field(std::array<std::vector<int>, kChannels>& field) {
        for (auto& column : field) {
            column.assign(ColorManagement::kFieldLevels, static_cast<int>(kUnread));
        }
        for (std::size_t i = 0; i < ColorManagement::kFieldLevels; ++i) {
            std::array<int, kChannels> values{};
            values.fill(static_cast<int>(kUnread));
            read_values(lines_.next(), std::span<int>(values));
            for (std::size_t c = 0; c < kChannels; ++c) {
                field[c][i] = values[c];
            }
        }
    }

    void check_field(const std::array<std::vector<int>, kChannels>& field, const char* which) {
        for (std::size_t i = 0; i < ColorManagement::kFieldLevels; ++i) {
            if (std::any_of(field.begin(), field.end(), [i](const auto& column) { return column[i] < 0; })) {
                refuse("Element Nr." + std::to_string(i) + " der " + which +
                           ".Gamma-Bewertungsfunktion ungueltig",
                       "invalid or missing table entry");
            }
        }
    }

private:
    /// The name of a fault is the same in both languages; `meaning` stands behind it in English.
    void refuse(const std::string& fault, const char* meaning) {
        if (failure_) {
            return;
        }
        failure_ = Failure::of_run(
            messages_.text<Msg::warpimage_external_color_file_error>() + printable(name_) + '\n' + fault +
            (messages_.is_german() ? std::string("\n") : std::string(" (") + meaning + ")\n"));
    }

    const std::string& name_;
    const MessageCatalogue& messages_;
    DataLines lines_;
    std::optional<Failure> failure_;
};

}  // namespace

Result<ColorManagement> read_colour_file(const ColourFile& file, const MessageCatalogue& messages) {
    std::string reason;
    const auto bytes = read_file_whole(file.path, reason);
    if (!bytes) {
        return Failure::of_run("\nwarpimage: " + printable(file.path) +
                               messages.text<Msg::warpimage_cannot_be_opened>());
    }
    const std::vector<TextLine> lines = text_lines(*bytes);
    Reader reader(file.name, messages, DataLines(lines));
    ColorManagement colours;
    reader.read_matrix(colours.left);
    reader.read_matrix(colours.right);
    reader.check_matrix(colours.left, "left  ");
    reader.check_matrix(colours.right, "right ");
    if (file.curves == ColourCurves::exponents) {
        reader.read_exponents(colours.gamma_in);
        reader.read_exponents(colours.gamma_out);
        reader.check_exponents(colours.gamma_in, "Gamma-Exponent ungueltig: gamma_",
                               "invalid gamma exponent");
        reader.check_exponents(colours.gamma_out, "Inverser Gamma-Exponent ungueltig: gamma_",
                               "invalid inverse gamma exponent");
    } else {
        reader.read_field(colours.field_in);
        reader.read_field(colours.field_out);
        reader.check_field(colours.field_in, "1");
        reader.check_field(colours.field_out, "2");
    }
    if (reader.failure()) {
        return *reader.failure();
    }
    return colours;
}

}  // namespace zemora

#include "render/color_management.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "config/number_scan.h"
#include "config/text_lines.h"
#include "platform/paths.h"
#include "platform/process_end.h"
#include "platform/safe_file.h"
#include "render/value_lines.h"

namespace zemora {

namespace {

constexpr int kChannels = 3;
constexpr float kUnread = -1.0F;         ///< What a value is before its line was read.
constexpr float kLowestElement = -0.5F;  ///< Below it an element counts as not given.
constexpr const char* kChannelNames[kChannels] = {"red", "grn", "blu"};

bool is_matrix_anaglyph(const ParameterSet& parameters) {
    return parameters.anaglyph_type == 8 || parameters.anaglyph_type == 9;
}

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

[[noreturn]] void end_with_wait(Voice& voice) {
    voice.wait(Severity::error);
    end_process(kExitFailure);
}

/// Reads and checks; every fault ends the run.
class Reader {
public:
    Reader(const ParameterSet& parameters, Voice& voice, DataLines lines)
        : name_(parameters.ecm_file_name), voice_(voice), lines_(lines) {}

    void read_matrix(ColorManagement::Matrix& matrix) {
        for (auto& row : matrix) {
            row.fill(kUnread);
            read_values(lines_.next(), std::span<float>(row));
        }
    }

    /// In the order of their names: all outputs of red, then of green, then of blue.
    void check_matrix(const ColorManagement::Matrix& matrix, const std::string& view) const {
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
                         const char* meaning) const {
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

    void check_field(const std::array<std::vector<int>, kChannels>& field, const char* which) const {
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
    [[noreturn]] void refuse(const std::string& fault, const char* meaning) const {
        voice_.say<Msg::warpimage_external_color_file_error>();
        voice_.print(printable(name_) + '\n' + fault);
        voice_.print(voice_.messages().is_german() ? std::string("\n") : std::string(" (") + meaning + ")\n");
        end_with_wait(voice_);
    }

    const std::string& name_;
    Voice& voice_;
    DataLines lines_;
};

std::vector<TextLine> lines_of(const std::string& path, Voice& voice) {
    std::string reason;
    const auto bytes = read_file_whole(path, reason);
    if (!bytes) {
        voice.print("\nwarpimage: " + printable(path));
        voice.say<Msg::warpimage_cannot_be_opened>();
        end_with_wait(voice);
    }
    return text_lines(*bytes);
}

}  // namespace

bool uses_color_management(const ParameterSet& parameters) {
    return parameters.ext_color_management == 1 || parameters.ext_color_management == 2 ||
           is_matrix_anaglyph(parameters);
}

ColorManagement read_color_management_file(const ParameterSet& parameters, Voice& voice) {
    ColorManagement colours;
    if (!uses_color_management(parameters)) {
        return colours;
    }
    const std::vector<TextLine> lines =
        lines_of(join_path(parameters.path_of_images, parameters.ecm_file_name), voice);
    Reader reader(parameters, voice, DataLines(lines));
    reader.read_matrix(colours.left);
    reader.read_matrix(colours.right);
    reader.check_matrix(colours.left, "left  ");
    reader.check_matrix(colours.right, "right ");
    if (parameters.ext_color_management == 1 || is_matrix_anaglyph(parameters)) {
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
    return colours;
}

}  // namespace zemora

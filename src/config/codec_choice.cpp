#include "config/codec_choice.h"

#include <algorithm>
#include <cstdint>

#include "config/codec_file.h"
#include "config/number_scan.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

constexpr std::string_view kFileMark = "|file";
constexpr long kBytesPerKilobit = 125;

/// The code, and all that stands behind it.
struct CodecText {
    std::string_view code;
    std::string_view rest;
};

CodecText parts_of(std::string_view text) {
    constexpr std::size_t kCodeLength = 4;
    const std::size_t end = std::min({text.find('|'), kCodeLength, text.size()});
    return {text.substr(0, end), text.substr(end)};
}

bool holds_file_mark(const std::string& codec) {
    return codec.find(kFileMark) != std::string::npos;
}

bool writes_video(const ParameterSet& p) {
    return (p.video_output != 0 && p.video_mode != 0) || p.make_av != 0;
}

/// Two streams share one file with these values of `VideoOutput`.
bool has_double_rate(int video_output) {
    return video_output == setting::video_output::side_by_side ||
           video_output == setting::video_output::two_streams;
}

CodecSettings preset_for(const VideoCodecRow& row, const ParameterSet& p) {
    constexpr long kFrameRate = 25;
    constexpr long kRateDivisor = 3333;
    constexpr int kLargestSide = 65536;
    const long width = std::clamp(p.output_width, 0, kLargestSide);
    const long height = std::clamp(p.output_height, 0, kLargestSide);
    CodecSettings settings;
    settings.code = row.code;
    settings.bytes_per_second = width * height * kFrameRate / kRateDivisor * kBytesPerKilobit *
                                (has_double_rate(p.video_output) ? 2 : 1);
    return settings;
}

void tell_encoding(const CodecSettings& settings, Voice& voice) {
    if (voice.verbose() <= 1) {
        return;
    }
    const std::string& code = settings.code;
    voice.say<Msg::parameters_encoding_heading>();
    voice.say<Msg::parameters_encoding_chosen_values>();
    voice.say<Msg::parameters_encoding_fourcc>(code[0], code[1], code[2], code[3]);
    voice.say<Msg::parameters_encoding_quality>(settings.quality_percent);
    voice.say<Msg::parameters_encoding_bit_rate>(settings.bytes_per_second / kBytesPerKilobit);
    voice.say<Msg::parameters_encoding_key_frames>(static_cast<long>(settings.key_frame_distance));
    voice.wait(Severity::information);
}

/// The text that names the chosen codec: with its file, or with its values where none can be written.
std::string kept_choice(const CodecSettings& settings, const RuleSurroundings& surroundings, Voice& voice) {
    const std::string path = join_path(surroundings.own_folder(), codec_file_name(settings.code));
    const std::string text = codec_file_text(settings);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());  // NOLINT: text as bytes
    const std::string reason = write_file_whole(path, std::span(bytes, text.size()));
    if (reason.empty()) {
        return settings.code + std::string(kFileMark);
    }
    voice.print(
        format_text(voice.messages().either({"The codec file %s could not be written: %s\n",
                                             "Die Codec-Datei %s konnte nicht geschrieben werden: %s\n"}),
                    printable(path).c_str(), reason.c_str()));
    return settings.code + format_text("|%d|%ld|%d", settings.quality_percent,
                                       settings.bytes_per_second / kBytesPerKilobit,
                                       settings.key_frame_distance);
}

Result<void> choose_codec(ParameterSet& parameters, const RuleSurroundings& surroundings, Voice& voice) {
    voice.say<Msg::parameters_codec_dialog_waiting>();
    const VideoCodecRow* chosen = surroundings.can_ask ? ask_for_codec(voice) : nullptr;
    if (chosen == nullptr) {
        return Failure::of_run(voice.messages().text<Msg::parameters_codec_dialog_open_failed>());
    }
    const CodecSettings settings = preset_for(*chosen, parameters);
    tell_encoding(settings, voice);
    std::string_view rest = parts_of(parameters.video_codec).rest;
    while (rest.starts_with(kFileMark)) {  // it stood for the file that is missing
        rest.remove_prefix(kFileMark.size());
    }
    parameters.video_codec = kept_choice(settings, surroundings, voice) + std::string(rest);
    return {};
}

Result<void> choose_if_asked(ParameterSet& parameters, const RuleSurroundings& surroundings, Voice& voice) {
    if (parameters.video_codec.starts_with('?') &&
        parameters.write_data_base != setting::write_data_base::list_only && writes_video(parameters)) {
        return choose_codec(parameters, surroundings, voice);
    }
    return {};
}

/// A codec file that is gone must be made again.
Result<void> check_codec_file(ParameterSet& parameters, const RuleSurroundings& surroundings, Voice& voice) {
    const std::string code = codec_code_of(parameters.video_codec);
    if (!find_codec_file(code, surroundings.program_folder, surroundings.own_folder()).empty()) {
        return {};
    }
    voice.say<Msg::parameters_codec_file_missing_use_dialog>(
        printable(join_path(surroundings.program_folder, codec_file_name(code))));
    voice.wait(Severity::error);
    parameters.video_codec = "????" + std::string(parts_of(parameters.video_codec).rest);
    return choose_if_asked(parameters, surroundings, voice);
}

/// Three values stand behind the code, each behind a bar.
Result<void> check_values(const ParameterSet& parameters, const RuleSurroundings& surroundings,
                          Voice& voice) {
    constexpr int kValues = 3;
    const std::string& codec = parameters.video_codec;
    const auto bars = std::count(codec.begin(), codec.end(), '|');
    const bool bar_behind_code = codec.substr(0, 5).find('|', 3) != std::string::npos;
    if (!bar_behind_code || bars >= kValues) {
        return {};
    }
    const MessageCatalogue& messages = voice.messages();
    voice.print((bars == 2 ? messages.text<Msg::parameters_codec_format_case_4>()
                           : messages.text<Msg::parameters_codec_format_case_5>()) +
                printable(codec) + '\n');
    static constexpr Parameter kKeys[] = {Parameter::video_codec};
    return refused_settings(kKeys, surroundings, messages);
}

}  // namespace

const VideoCodecRow* ask_for_codec(Voice& voice) {
    const MessageCatalogue& messages = voice.messages();
    for (int i = 0; i < kVideoCodecCount; ++i) {
        const VideoCodecRow& row = kVideoCodecs[i];
        voice.print(
            format_text("%2d  %s  %s\n", i + 1, std::string(row.code).c_str(), messages.either(row.meaning)));
    }
    for (;;) {
        voice.print(messages.either({"Number of the codec: ", "Nummer des Codecs: "}));
        voice.console().flush();
        const auto line = voice.console().read_line();
        if (!line) {
            voice.print("\n");
            return nullptr;
        }
        const int number = scan_integer(*line).value_or(0);
        if (number >= 1 && number <= kVideoCodecCount) {
            return &kVideoCodecs[number - 1];
        }
    }
}

Result<void> settle_video_codec(ParameterSet& parameters, const RuleSurroundings& surroundings,
                                Voice& voice) {
    if (parameters.video_mode == setting::video_mode::images &&
        parameters.make_av == setting::make_av::none) {
        return {};
    }
    std::string& codec = parameters.video_codec;
    if (codec.starts_with("RGB") || codec.starts_with("rgb")) {
        codec.replace(0, 3, "DIB");
    }
    if (Result<void> chosen = choose_if_asked(parameters, surroundings, voice); !chosen) {
        return chosen;
    }
    if (!holds_file_mark(codec)) {
        return check_values(parameters, surroundings, voice);
    }
    if (parameters.write_data_base != setting::write_data_base::list_only && !codec.starts_with('?')) {
        return check_codec_file(parameters, surroundings, voice);
    }
    return {};
}

}  // namespace zemora

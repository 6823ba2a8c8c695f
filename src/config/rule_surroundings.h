#pragma once
/// What the consistency rules have to know besides the settings, and the failure of a run that they refuse.

#include <functional>
#include <optional>
#include <span>
#include <string>

#include "config/encoder_latency.h"
#include "config/parameter_table.h"
#include "config/voice.h"
#include "platform/paths.h"

namespace zemora {

struct RuleSurroundings {
    std::string program_folder;  ///< Viewers stand below it, codec files in it.
    std::string parameter_file;  ///< As given or found; may be empty or name no file.
    bool can_ask = false;        ///< Somebody sits at a terminal.
    char separator = '/';        ///< Between the folders of a path on this system.
    std::function<std::string()> own_folder = state_directory;  ///< For new codec files.
    std::optional<EncoderSettings> encoder_settings;            ///< Of an encoder that keeps its own.
};

/// The failure that ends a run for its settings: asks to check them, and names the parameter file where there
/// is one.
[[nodiscard]] Failure refused_settings(std::span<const Parameter> settings,
                                       const RuleSurroundings& surroundings,
                                       const MessageCatalogue& messages);

}  // namespace zemora

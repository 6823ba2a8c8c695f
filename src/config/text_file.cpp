#include "config/text_file.h"

#include <cstdint>

#include "platform/console.h"
#include "platform/safe_file.h"

namespace zemora {

Result<void> write_text_file(const std::string& path, std::string_view text,
                             const MessageCatalogue& messages) {
    const std::string reason =
        write_file_whole(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    if (reason.empty()) {
        return {};
    }
    Failure failed =
        Failure::of_run(format_text(messages.either({"The file %s cannot be written: %s\n",
                                                     "Die Datei %s kann nicht geschrieben werden: %s\n"}),
                                    printable(path).c_str(), reason.c_str()));
    failed.file = path;
    return failed;
}

}  // namespace zemora

#pragma once
/// Which files are inputs of the run, so that none of them is ever written over.

#include <mutex>
#include <string>
#include <unordered_set>

#include "input/image_list.h"
#include "platform/paths.h"

namespace zemora {

/// Why an output whose name is that of an input is not written.
[[nodiscard]] inline const char* input_of_run_text(const MessageCatalogue& messages) {
    return messages.either({"It is an input of this run.", "Das ist eine Eingabedatei dieses Laufs."});
}

/// May be asked from several threads.
class RunInputs {
public:
    explicit RunInputs(const ImageList& list) : list_(list) {}
    /// Whether `path` names an input, under whatever name. Asks the disk about the inputs at the first
    /// output whose name exists already.
    [[nodiscard]] bool holds(const std::string& path);
    /// An input was replaced by an edited copy of itself.
    void note_replaced(const std::string& path);

private:
    struct Hash {
        std::size_t operator()(const FileIdentity& file) const {
            return static_cast<std::size_t>(file.inode * 0x9E3779B97F4A7C15U ^ file.device);
        }
    };
    void add(const std::string& path);

    const ImageList& list_;
    std::mutex mutex_;
    bool known_ = false;
    std::unordered_set<FileIdentity, Hash> files_;
};

}  // namespace zemora

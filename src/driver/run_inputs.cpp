#include "driver/run_inputs.h"

namespace zemora {

bool RunInputs::holds(const std::string& path) {
    const auto file = identity_of(path);
    if (!file) {
        return false;
    }
    const std::lock_guard lock(mutex_);
    if (!known_) {
        known_ = true;
        for (const std::string& input : list_.names()) {
            add(input);
        }
    }
    return files_.contains(*file);
}

void RunInputs::note_replaced(const std::string& path) {
    const std::lock_guard lock(mutex_);
    if (known_) {
        add(path);
    }
}

void RunInputs::add(const std::string& path) {
    if (const auto file = identity_of(path)) {
        files_.insert(*file);
    }
}

}  // namespace zemora

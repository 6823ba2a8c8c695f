#pragma once
/// An outside program that stays and is spoken with over its standard input and output.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zemora {

class ChildDialog {
public:
    ChildDialog() = default;
    ChildDialog(const ChildDialog&) = delete;
    ChildDialog& operator=(const ChildDialog&) = delete;
    /// Ends the dialog.
    ~ChildDialog();

    /// Starts the program; its standard error is dropped. `goodbye` is what ends it. It also ends
    /// when this process does, in whatever way. False when it could not be started.
    [[nodiscard]] bool start(const std::vector<std::string>& arguments, std::string goodbye);
    [[nodiscard]] bool is_running() const { return child_ > 0; }
    /// Writes all of `text`; false when the program has gone.
    [[nodiscard]] bool write(std::string_view text);
    /// Reads one answer, up to and with `end`. What the program has said beyond it stays for the next
    /// call. False, with what there is, when the program has gone.
    [[nodiscard]] bool read_until(std::string_view end, std::vector<std::uint8_t>& output);
    /// Says goodbye and waits for the end of the program; one that stays is ended.
    void close();

private:
    std::vector<std::uint8_t> received_;  ///< Read and not given out yet.
    std::string goodbye_;
    int child_ = 0;
    int to_child_ = -1;
    int from_child_ = -1;
};

}  // namespace zemora

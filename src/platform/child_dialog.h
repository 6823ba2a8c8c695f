#pragma once
/// An outside program that stays and is spoken with over its standard streams.

#include <cstddef>
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

    /// Starts the program. `goodbye` is what ends it. It also ends when the calling thread
    /// does, or the process in whatever way. False when it could not be started.
    [[nodiscard]] bool start(const std::vector<std::string>& arguments, std::string goodbye);
    [[nodiscard]] bool is_running() const { return child_ > 0; }
    /// Writes all of `text`; false when the program has gone.
    [[nodiscard]] bool write(std::string_view text);
    /// Reads one answer, up to and with `end`. What the program has said beyond it stays for the next
    /// call. With `errors` its standard error has an answer with the same end, which is waited for too.
    /// False, with what there is, when the program has gone.
    [[nodiscard]] bool read_until(std::string_view end, std::vector<std::uint8_t>& output,
                                  std::vector<std::uint8_t>* errors = nullptr);
    /// Says goodbye and waits for the end of the program; one that stays is ended.
    void close();

private:
    /// What the program says on one of its streams.
    struct Stream {
        int descriptor = -1;
        std::vector<std::uint8_t> received;  ///< Read and not given out yet.
        std::size_t searched = 0;            ///< No answer ends before this byte of it.
        /// An answer that is there to its end.
        [[nodiscard]] bool take(std::string_view end, std::vector<std::uint8_t>& answer);
        /// Reads what there is; false at the end of the stream.
        [[nodiscard]] bool receive();
    };
    /// Waits until one of the streams has something to say; false when the output has ended.
    [[nodiscard]] bool receive_some();

    Stream output_;
    Stream errors_;
    std::string goodbye_;
    int child_ = 0;
    int to_child_ = -1;
};

}  // namespace zemora

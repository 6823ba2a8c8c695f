#pragma once
/// Moving a user's file without ever replacing another one.

#include <string>

namespace zemora {

enum class MoveResult {
    done,
    target_exists,  ///< Nothing was moved.
    failed,         ///< Nothing was moved; the system's reason says why.
};

struct MoveOutcome {
    MoveResult result = MoveResult::failed;
    std::string reason;
    [[nodiscard]] bool is_done() const { return result == MoveResult::done; }
};

/// Whether a file, folder or link has that name, wherever the link leads.
[[nodiscard]] bool name_is_taken(const std::string& path);

/// Renames `from` to `to` on one file system. A file, folder or link that has the new name stays.
[[nodiscard]] MoveOutcome move_without_replacing(const std::string& from, const std::string& to);

/// Gives the file a second name, where the file system can do that, else moves it. After `done` the
/// contents are safe under `to`, and `from` may be written anew.
[[nodiscard]] MoveOutcome keep_under_other_name(const std::string& from, const std::string& to);

/// The file that a link leads to, over all its links; `path` itself when it is none.
[[nodiscard]] std::string target_of_link(const std::string& path);

}  // namespace zemora

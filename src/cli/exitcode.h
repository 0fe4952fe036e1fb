#pragma once

namespace kestrine::cli {

/// How kestrine-cli ends, for scripts and the systemd timer to tell outcomes apart.
enum ExitCode : int {
    Success = 0,
    /// The operation failed; its error text went to standard error.
    Failure = 1,
    /// The command line was wrong; nothing was done.
    Usage = 2,
};

} // namespace kestrine::cli

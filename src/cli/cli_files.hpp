// Files as a whole: read at once, written beside and renamed, so that a failure leaves nothing half-written.
#pragma once

#include <functional>
#include <string>
#include <string_view>

// The content of a file, or of standard input for "-". Fails when it cannot be read or is empty.
std::string cli_read_file(const std::string &path);

// The same for a text file: one that holds a NUL is refused, since a string ends there.
std::string cli_read_text(const std::string &path);
void cli_refuse_nul(const std::string &content, const std::string &path);

// Writes a file, or to standard output for "-".
void cli_write_file(const std::string &path, const std::string &content);

// The same for what is made piece by piece: write is called with what takes a piece.
using cli_sink = std::function<void(std::string_view)>;
void cli_write_pieces(const std::string &path, const std::function<void(const cli_sink &)> &write);

// Writes to standard output and makes sure that it arrived.
void cli_print(const std::string &text);

// Writes to standard error, printf-style; when that fails there is nobody left to tell. Allocates nothing.
[[gnu::format(printf, 1, 2)]] void cli_tell(const char *format, ...);

// The bytes of a catalogue file become the text of one JSON object.
#pragma once

#include "kt_owned.hpp"

#include <string>
#include <string_view>

// Sets split_texts when a line end stood inside a text of the document: blanks at that place may be lost.
// Line ends between values stay, and those before the document too, so that the lines of an error message are the
// file's. A bare list of tables becomes the member "tables" of an object.
void host_decode_file(KT_context *ctx, const char *bytes, size_t size, std::string &json, bool &split_texts);

// What the user of a document that a tool cut off can tell the tool.
inline constexpr char host_cut_hint[] =
    "tools cut long texts: sqlcmd needs -y 0 and no -W, Invoke-Sqlcmd -MaxCharLength 2147483647, bcp queryout with -w; "
    "in Management Studio save the cell to a file, or set the maximum characters retrieved for results in a grid to "
    "unlimited";

// Whether the text ends before the document's last brace: something was cut off.
bool host_is_cut(std::string_view json);

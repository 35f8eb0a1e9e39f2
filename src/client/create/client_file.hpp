// The file that a database is created in: who made it, and whether it may go again.
#pragma once

#include "kt_owned.hpp"

#include <string>
#include <sys/types.h>

struct client_file {
    std::string path; // can only mean a file to SQLite
    bool made = false;
    // Which file it is, whatever the path leads to by now.
    dev_t device = 0;
    ino_t inode = 0;
};

// Makes the file, unless there is one. A symbolic link that leads to no file is refused.
void client_file__make(KT_context *ctx, const char *file_name, client_file &file) noexcept;

// Whether the path leads to that file: another creation may have made it, failed, and removed it.
bool client_file__is_there(const client_file &file) noexcept;

// Removes a file that was made here, if nothing is in it. Nobody can write to it meanwhile.
void client_file__remove_if_empty(const client_file &file) noexcept;

// What import reads: one file of any kind, or several scripts, perhaps all of a folder.
#pragma once

#include <string>
#include <vector>

struct cli_source {
    std::string name; // as messages show it
    std::string bytes;
    bool is_file = true; // not standard input
};

// Reads files and folders; "-" is standard input. Of a folder, all files named *.sql in it and in the folders below,
// in the order of their names. Fails when one cannot be read, a folder holds no script, or a file is given twice.
std::vector<cli_source> cli_read_sources(const std::vector<std::string> &paths);

// The files that this would read; standard input is "-" among them.
std::vector<std::string> cli_source_files(const std::vector<std::string> &paths);

// The file that was read or, of several, the folder that they all are in.
std::string cli_common_path(const std::vector<cli_source> &sources);

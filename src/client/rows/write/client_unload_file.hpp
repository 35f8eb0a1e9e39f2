// A file that rows are written to, in pieces.
#pragma once

#include "kt_try.hpp"

#include <cstdio>
#include <string>

class client_unload_file {
  public:
    client_unload_file() = default;
    ~client_unload_file();
    client_unload_file(const client_unload_file &) = delete;
    client_unload_file &operator=(const client_unload_file &) = delete;

    // Makes the file, or empties it; with_mark says whether one begins UTF-8 too.
    void open(KT_context *ctx, const std::string &name, bool utf_16, bool with_mark);
    void write(KT_context *ctx, const std::string &text);
    void close(KT_context *ctx);

  private:
    std::FILE *file_ = nullptr;
    std::string name_;
    std::string units_;
    bool utf_16_ = false;
};

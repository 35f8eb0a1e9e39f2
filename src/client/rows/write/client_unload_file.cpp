#include "rows/write/client_unload_file.hpp"

#include "rows/convert/client_utf8.hpp"

#include <cerrno>
#include <cstring>

#define KT_HERE "src/client/rows/write/client_unload_file"

client_unload_file::~client_unload_file()
{
    if (file_)
        std::fclose(file_);
}

void client_unload_file::open(KT_context *ctx, const std::string &name, bool utf_16, bool with_mark)
{
    name_ = name;
    utf_16_ = utf_16;
    file_ = std::fopen(name.c_str(), "wbe");
    if (!file_)
        KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", name.c_str(), std::strerror(errno));
    if (utf_16 || with_mark)
        KT_TRY(write(ctx, "\xEF\xBB\xBF"));
}

void client_unload_file::write(KT_context *ctx, const std::string &text)
{
    units_.clear();
    if (utf_16_)
        client_append_as_utf16(units_, text);
    const std::string &bytes = utf_16_ ? units_ : text;
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size())
        KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", name_.c_str(), std::strerror(errno));
}

void client_unload_file::close(KT_context *ctx)
{
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!closed)
        KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", name_.c_str(), std::strerror(errno));
}

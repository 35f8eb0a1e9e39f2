#include "rows/load/client_rejects.hpp"

#include "rows/convert/client_json_text.hpp"
#include "rows/convert/client_utf8.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#define KT_HERE "src/client/rows/load/client_rejects"

// A value is shown up to so many bytes, and then a mark that it was cut.
static constexpr size_t most_shown = 200;
static constexpr std::string_view cut_mark = "\xE2\x80\xA6";

// A JSON string; what is not UTF-8 becomes the replacement character.
static void my_append_string(std::string &json, std::string_view text)
{
    json.push_back('"');
    while (!text.empty()) {
        size_t size = text.size();
        while (size > 0 && client_measure_text(text.substr(0, size)).flaw != client_utf8_flaw::none)
            size /= 2;
        for (const char byte : text.substr(0, size))
            client_append_json_byte(json, byte);
        text.remove_prefix(size);
        if (size > 0 || text.empty())
            continue;
        std::string_view rest = text;
        client_next_char(rest);
        const std::string_view bytes = text.substr(0, text.size() - rest.size());
        if (client_measure_text(bytes).flaw == client_utf8_flaw::none)
            for (const char byte : bytes)
                client_append_json_byte(json, byte);
        else
            json += "\xEF\xBF\xBD";
        text = rest;
    }
    json.push_back('"');
}

static void my_append_member(std::string &json, const char *name, std::string_view text)
{
    json += json.size() > 1 && json.back() != '{' ? ",\"" : "\"";
    json += name;
    json += "\":";
    my_append_string(json, text);
}

static void my_append_number(std::string &json, const char *name, int64_t number)
{
    json += std::string(",\"") + name + "\":" + std::to_string(number);
}

static std::string_view my_cut(std::string_view value)
{
    size_t size = most_shown;
    while (size > 0 && (static_cast<unsigned char>(value[size]) & 0xC0) == 0x80)
        size--;
    return value.substr(0, size);
}

void client_append_refusal(std::string &json, const client_refusal &refusal)
{
    std::string line = "{";
    my_append_member(line, "file", refusal.file);
    my_append_member(line, "table", refusal.tbl);
    my_append_number(line, "row", refusal.row);
    my_append_number(line, "line", refusal.line);
    my_append_number(line, "byte", refusal.position);
    if (!refusal.col.empty()) {
        const bool is_cut = refusal.value.size() > most_shown;
        my_append_member(line, "column", refusal.col);
        std::string value(is_cut ? my_cut(refusal.value) : refusal.value);
        my_append_member(line, "value", is_cut ? value.append(cut_mark) : value);
        if (is_cut)
            my_append_number(line, "bytes", static_cast<int64_t>(refusal.value.size()));
    }
    my_append_member(line, "code", client_reject_word(refusal.reject));
    my_append_member(line, "message", refusal.message);
    json += line + "}\n";
}

std::string client_find_reject_name(const std::string &directory, const std::string &name,
                                    const std::vector<std::string> &taken)
{
    const size_t point = std::min(name.rfind('.'), name.size());
    std::string candidate = name;
    for (int number = 2;; number++) {
        struct stat file {};
        const bool is_there = stat((directory + "/" + candidate).c_str(), &file) == 0;
        if (!is_there && std::find(taken.begin(), taken.end(), candidate) == taken.end())
            return candidate;
        candidate = name.substr(0, point) + "-" + std::to_string(number) + name.substr(point);
    }
}

client_reject_files::~client_reject_files()
{
    if (rows_)
        std::fclose(rows_);
    if (lines_)
        std::fclose(lines_);
}

// Cuts off what follows the recorded end; a file of which nothing is recorded goes.
static bool my_cut_file(const std::string &name, int64_t size)
{
    struct stat file {};
    if (stat(name.c_str(), &file) != 0)
        return size == 0;
    if (size == 0)
        return unlink(name.c_str()) == 0;
    return file.st_size >= size && truncate(name.c_str(), size) == 0;
}

void client_reject_files::open(KT_context *ctx, const std::string &directory, const std::string &name,
                               int64_t rows_size, int64_t lines_size)
{
    rows_name_ = directory + "/" + name;
    lines_name_ = rows_name_ + ".jsonl";
    rows_size_ = rows_size;
    lines_size_ = lines_size;
    for (const auto &[file, size] : {std::pair(&rows_name_, rows_size), std::pair(&lines_name_, lines_size)}) {
        if (!my_cut_file(*file, size))
            KT_FAIL(KT_ERR_NOT_FOUND, "%s: the rejects of an interrupted load are not there any more", file->c_str());
    }
}

void client_reject_files::make(KT_context *ctx, const std::string &name, int64_t size, std::FILE **file)
{
    *file = std::fopen(name.c_str(), size > 0 ? "abe" : "wbe");
    if (!*file)
        KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", name.c_str(), std::strerror(errno));
}

void client_reject_files::add(KT_context *ctx, const std::string &raw_row, const client_refusal &refusal)
{
    if (!rows_) {
        KT_TRY(make(ctx, rows_name_, rows_size_, &rows_));
        KT_TRY(make(ctx, lines_name_, lines_size_, &lines_));
        if (rows_size_ == 0)
            std::fwrite(head_.data(), 1, head_.size(), rows_);
    }
    std::string json;
    client_append_refusal(json, refusal);
    if (is_cut_)
        std::fwrite(row_end_.data(), 1, row_end_.size(), rows_);
    is_cut_ = !raw_row.ends_with(row_end_);
    const bool written = std::fwrite(raw_row.data(), 1, raw_row.size(), rows_) == raw_row.size() &&
                         std::fwrite(json.data(), 1, json.size(), lines_) == json.size();
    if (!written)
        KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", rows_name_.c_str(), std::strerror(errno));
}

void client_reject_files::flush(KT_context *ctx, int64_t *rows_size, int64_t *lines_size)
{
    if (rows_) {
        if (std::fflush(rows_) != 0 || std::fflush(lines_) != 0)
            KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", rows_name_.c_str(), std::strerror(errno));
        rows_size_ = std::ftell(rows_);
        lines_size_ = std::ftell(lines_);
    }
    *rows_size = rows_size_;
    *lines_size = lines_size_;
}

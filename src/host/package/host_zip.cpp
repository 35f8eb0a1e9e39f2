// Packages are ZIP archives. libzip reads them: it is small, kept up with hostile archives for years, reads from
// memory, and knows ZIP64, which packages of large databases need. What it leaves to its users is here: limits, names,
// and sizes that the directory only claims.
#include "package/host_zip.hpp"

#include "kt_folded.hpp"

#include <algorithm>
#include <unordered_set>
#include <zip.h>

#define KT_HERE "src/host/package/host_zip"

static constexpr size_t piece_size = 65536;

bool host_is_package(std::string_view bytes)
{
    return bytes.starts_with("PK\x03\x04") || bytes.starts_with("PK\x05\x06");
}

host_zip::~host_zip()
{
    if (archive_)
        zip_discard(archive_);
}

const host_zip_entry *host_zip::find(std::string_view name) const
{
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [name](const host_zip_entry &entry) { return kt_equal_folded(entry.name, name); });
    return found == entries_.end() ? nullptr : &*found;
}

// Raises the error that libzip has for an archive that cannot be opened.
static void my_fail_to_open(KT_context *ctx, std::string_view bytes, zip_error_t &error)
{
    const int code = zip_error_code_zip(&error);
    const std::string message = zip_error_strerror(&error);
    zip_error_fini(&error);
    if (code == ZIP_ER_MEMORY)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    if (code == ZIP_ER_NOZIP && host_is_package(bytes))
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the package is cut off: its directory, which ends the file, is missing");
    KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the package cannot be opened: %s", message.c_str());
}

static void my_open(KT_context *ctx, std::string_view bytes, zip **archive)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
    if (source)
        *archive = zip_open_from_source(source, ZIP_RDONLY, &error);
    if (!*archive) {
        zip_source_free(source);
        KT_TRY(my_fail_to_open(ctx, bytes, error));
    }
    zip_error_fini(&error);
}

// Names are relative paths with slashes. Any other is an attempt to lead a careless tool astray.
static bool my_is_plain_path(std::string_view name)
{
    if (name.empty() || name.front() == '/' || name.find_first_of("\\:") != std::string_view::npos)
        return false;
    if (std::any_of(name.begin(), name.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x20; }))
        return false;
    const std::string path = '/' + std::string(name) + '/';
    return path.find("/../") == std::string::npos && path.find("/./") == std::string::npos;
}

void host_zip::add_entry(KT_context *ctx, uint64_t index)
{
    zip_stat_t stat;
    zip_stat_init(&stat);
    constexpr zip_uint64_t needed = ZIP_STAT_NAME | ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE;
    if (zip_stat_index(archive_, index, 0, &stat) != 0 || (stat.valid & needed) != needed)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the package's directory is damaged at entry %llu: %s",
                static_cast<unsigned long long>(index + 1), zip_strerror(archive_));
    if (!my_is_plain_path(stat.name))
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the package has an entry named '%.200s', which is not a path in a package",
                stat.name);
    if (stat.valid & ZIP_STAT_ENCRYPTION_METHOD && stat.encryption_method != ZIP_EM_NONE)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%.200s in the package is encrypted", stat.name);
    entries_.push_back({stat.name, index, stat.size, stat.comp_size});
}

void host_zip::check_names(KT_context *ctx) const
{
    std::unordered_set<std::string> names;
    names.reserve(entries_.size());
    for (const host_zip_entry &entry : entries_) {
        if (!names.insert(kt_folded(entry.name)).second)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the package has two entries named %.200s", entry.name);
    }
}

void host_zip::open(KT_context *ctx, std::string_view bytes, const host_package_limits &limits)
{
    KT_TRY(my_open(ctx, bytes, &archive_));
    const auto count = static_cast<uint64_t>(zip_get_num_entries(archive_, 0));
    if (count > limits.entries)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the package has %llu entries; no more than %llu are read",
                static_cast<unsigned long long>(count), static_cast<unsigned long long>(limits.entries));
    entries_.reserve(count);
    for (uint64_t index = 0; index < count; index++)
        KT_TRY(add_entry(ctx, index));
    KT_TRY(check_names(ctx));
    uint64_t left = bytes.size();
    for (const host_zip_entry &entry : entries_) {
        if (entry.packed_size > left)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE,
                    "the package's entries are larger than the package: it is cut off, or they are packed into one "
                    "another");
        left -= entry.packed_size;
    }
}

struct host_close_file {
    void operator()(zip_file_t *file) const
    {
        zip_fclose(file);
    }
};

void host_zip::read(KT_context *ctx, const host_zip_entry &entry, const host_take &take)
{
    const std::unique_ptr<zip_file_t, host_close_file> file{zip_fopen_index(archive_, entry.index, 0)};
    if (!file)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s in the package cannot be unpacked: %s", entry.name,
                zip_strerror(archive_));
    if (!piece_)
        piece_ = std::make_unique<char[]>(piece_size);
    uint64_t left = entry.size;
    for (;;) {
        const zip_int64_t got = zip_fread(file.get(), piece_.get(), piece_size);
        if (got < 0)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s in the package is damaged: %s", entry.name,
                    zip_file_strerror(file.get()));
        if (got == 0)
            break;
        if (static_cast<uint64_t>(got) > left)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s in the package is larger than the package's directory says",
                    entry.name);
        left -= static_cast<uint64_t>(got);
        KT_TRY(take(ctx, {piece_.get(), static_cast<size_t>(got)}));
    }
    if (left > 0)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s in the package is smaller than the package's directory says", entry.name);
}

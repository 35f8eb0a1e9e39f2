#include "rows/load/client_versions.hpp"

#include "rows/table/client_row_tbl.hpp"

#include <algorithm>

#define KT_HERE "src/client/rows/load/client_versions"

client_version_bytes client_bytes_of_version(uint64_t number) noexcept
{
    client_version_bytes bytes{};
    for (size_t n = bytes.size(); n-- > 0; number >>= 8)
        bytes[n] = static_cast<char>(number & 0xFF);
    return bytes;
}

uint64_t client_number_of_version(std::string_view bytes) noexcept
{
    uint64_t number = 0;
    for (const char byte : bytes)
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

// What is NULL, or no version, counts as 0.
static void my_ask(KT_context *ctx, client_connection &database, const std::string &sql, uint64_t &number)
{
    kt_owned_statement handle{database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, database, sql, handle));
    KT_TRY(client_connection__step(ctx, database, handle, has));
    const void *bytes = has ? database.functions->column_blob(handle, 0) : nullptr;
    if (bytes && database.functions->column_bytes(handle, 0) == 8)
        number = client_number_of_version({static_cast<const char *>(bytes), 8});
}

void client_versions__follow(KT_context *ctx, client_connection &database, const std::string &tbl,
                             const std::string &col, client_versions &versions)
{
    uint64_t greatest = 0;
    uint64_t stored = 0;
    KT_TRY(my_ask(ctx, database, "SELECT max(" + client_quoted(col) + ") FROM " + client_quoted(tbl), greatest));
    if (!versions.counter.empty())
        KT_TRY(my_ask(ctx, database, "SELECT stored FROM " + client_quoted(versions.counter), stored));
    versions.last = std::max({versions.last, greatest, stored});
}

void client_versions__note(client_versions &versions, uint64_t version) noexcept
{
    if (version <= versions.last)
        return;
    versions.last = version;
    versions.is_told = false;
}

void client_versions__tell(KT_context *ctx, client_connection &database, client_versions &versions)
{
    if (versions.counter.empty() || versions.is_told)
        return;
    kt_owned_statement handle{database.functions};
    bool has = false;
    const std::string sql =
        "UPDATE " + client_quoted(versions.counter) + " SET last = ?1, stored = ?2 WHERE ?2 > stored";
    const client_version_bytes bytes = client_bytes_of_version(versions.last);
    const auto size = static_cast<int>(bytes.size());
    KT_TRY(client_connection__prepare(ctx, database, sql, handle));
    KT_TRY(client_connection__bind_int64(ctx, database, handle, 1, static_cast<int64_t>(versions.last)));
    KT_TRY(client_connection__check(ctx, database, database.functions->bind_blob(handle, 2, bytes.data(), size)));
    KT_TRY(client_connection__step(ctx, database, handle, has));
    versions.is_told = true;
}

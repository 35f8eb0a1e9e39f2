// The sizes that the server records for its types.
#include "records/host_declared_type.hpp"

#include <algorithm>
#include <array>
#include <limits>

enum class host_sizes {
    fixed,   // as in the table
    bytes,   // so many bytes as declared
    pairs,   // twice as many
    decimal, // by precision
    real,    // up to 24 bits
    seconds, // by scale: what follows the table's precision and bytes is the fraction of a second
    clr,
};

struct host_type_sizes {
    std::string_view name; // ends at NUL
    host_sizes sizes;
    int64_t max_length;
    int64_t precision;
    int64_t scale;
};

static constexpr host_type_sizes type_sizes[] = {
    {"bigint", host_sizes::fixed, 8, 19, 0},
    {"binary", host_sizes::bytes, 1, 0, 0},
    {"bit", host_sizes::fixed, 1, 1, 0},
    {"char", host_sizes::bytes, 1, 0, 0},
    {"date", host_sizes::fixed, 3, 10, 0},
    {"datetime", host_sizes::fixed, 8, 23, 3},
    {"datetime2", host_sizes::seconds, 6, 19, 7},
    {"datetimeoffset", host_sizes::seconds, 8, 26, 7},
    {"decimal", host_sizes::decimal, 0, 18, 0},
    {"float", host_sizes::real, 8, 53, 0},
    {"geography", host_sizes::clr, -1, 0, 0},
    {"geometry", host_sizes::clr, -1, 0, 0},
    {"hierarchyid", host_sizes::clr, 892, 0, 0},
    {"image", host_sizes::fixed, 16, 0, 0},
    {"int", host_sizes::fixed, 4, 10, 0},
    {"money", host_sizes::fixed, 8, 19, 4},
    {"nchar", host_sizes::pairs, 1, 0, 0},
    {"ntext", host_sizes::fixed, 16, 0, 0},
    {"numeric", host_sizes::decimal, 0, 18, 0},
    {"nvarchar", host_sizes::pairs, 1, 0, 0},
    {"real", host_sizes::fixed, 4, 24, 0},
    {"smalldatetime", host_sizes::fixed, 4, 16, 0},
    {"smallint", host_sizes::fixed, 2, 5, 0},
    {"smallmoney", host_sizes::fixed, 4, 10, 4},
    {"sql_variant", host_sizes::fixed, 8016, 0, 0},
    {"text", host_sizes::fixed, 16, 0, 0},
    {"time", host_sizes::seconds, 3, 8, 7},
    {"timestamp", host_sizes::fixed, 8, 0, 0},
    {"tinyint", host_sizes::fixed, 1, 3, 0},
    {"uniqueidentifier", host_sizes::fixed, 16, 0, 0},
    {"varbinary", host_sizes::bytes, 1, 0, 0},
    {"varchar", host_sizes::bytes, 1, 0, 0},
    {"xml", host_sizes::fixed, -1, 0, 0},
};

// A type's slot in a table that is made when this is compiled: every column asks for one.
static constexpr size_t slot_count = 128;

static constexpr size_t my_slot(std::string_view name)
{
    const auto at = [name](size_t n) { return static_cast<size_t>(static_cast<unsigned char>(name[n])); };
    return (at(0) * 7 + at(name.size() - 1) * 5 + at(name.size() / 2) * 3 + name.size()) % slot_count;
}

static constexpr std::array<uint8_t, slot_count> my_fill_slots()
{
    std::array<uint8_t, slot_count> slots{};
    for (size_t n = 0; n < std::size(type_sizes); n++) {
        size_t slot = my_slot(type_sizes[n].name);
        while (slots[slot] != 0)
            slot = (slot + 1) % slot_count;
        slots[slot] = static_cast<uint8_t>(n + 1);
    }
    return slots;
}
static constexpr std::array<uint8_t, slot_count> slots = my_fill_slots();

static const host_type_sizes *my_find(std::string_view name)
{
    if (name.empty())
        return nullptr;
    for (size_t slot = my_slot(name); slots[slot] != 0; slot = (slot + 1) % slot_count) {
        if (type_sizes[slots[slot] - 1].name == name)
            return &type_sizes[slots[slot] - 1];
    }
    return nullptr;
}

static int64_t my_decimal_bytes(int64_t precision)
{
    if (precision <= 9)
        return 5;
    if (precision <= 19)
        return 9;
    return precision <= 28 ? 13 : 17;
}

// What a declaration says may be absurd; a record holds the nearest number that it can.
template <class Held> static Held my_held(int64_t number)
{
    constexpr int64_t low = std::numeric_limits<Held>::min(), high = std::numeric_limits<Held>::max();
    return static_cast<Held>(std::clamp(number, low, high));
}

// Two more bytes at most, and a point with so many digits.
static host_type_sizes my_second_sizes(host_type_sizes sizes, int64_t scale)
{
    sizes.scale = scale;
    sizes.precision += scale > 0 ? scale + 1 : 0;
    sizes.max_length += (scale > 2 ? 1 : 0) + (scale > 4 ? 1 : 0);
    return sizes;
}

static host_type_sizes my_decimal_sizes(host_type_sizes sizes, const host_declared_type &type)
{
    sizes.precision = type.precision.value_or(sizes.precision);
    sizes.scale = type.scale.value_or(sizes.scale);
    sizes.max_length = my_decimal_bytes(sizes.precision);
    return sizes;
}

static host_type_sizes my_declared_sizes(host_type_sizes sizes, const host_declared_type &type)
{
    const int64_t length = type.length.value_or(1);
    switch (sizes.sizes) {
    case host_sizes::fixed:
    case host_sizes::clr:
    case host_sizes::real:
        return sizes;
    case host_sizes::bytes:
        sizes.max_length = length;
        return sizes;
    case host_sizes::pairs:
        sizes.max_length = length < 0 || length > INT32_MAX ? length : 2 * length;
        return sizes;
    case host_sizes::decimal:
        return my_decimal_sizes(sizes, type);
    case host_sizes::seconds:
        return my_second_sizes(sizes, type.scale.value_or(sizes.scale));
    }
    return sizes;
}

// The name under which the server's catalogue has the type.
static std::string_view my_catalogue_name(std::string_view name, const host_declared_type &type)
{
    if (name == "rowversion")
        return "timestamp";
    if (name == "sysname")
        return "nvarchar";
    return name == "float" && type.precision.value_or(53) <= 24 ? "real" : name;
}

// Readers that know the type give its name as the table has it.
static std::string_view my_folded(std::string_view name, std::string &buffer)
{
    if (my_find(name))
        return name;
    buffer = host_folded(name);
    return buffer;
}

void host_set_declared_type(host_texts &texts, const host_declared_type &type, host_column &col)
{
    std::string buffer;
    const std::string_view name = my_folded(type.name, buffer);
    host_declared_type full = type;
    if (name == "sysname") {
        full.length = 128;
        if (!col.user_type) {
            col.user_type = "sysname";
            col.user_type_schema = "sys";
        }
    }
    const host_type_sizes *sizes = my_find(my_catalogue_name(name, type));
    col.system_type = sizes ? sizes->name.data() : texts.keep(name);
    if (!col.user_type) {
        col.user_type = col.system_type;
        col.user_type_schema = "sys";
    }
    if (!sizes)
        return;
    const host_type_sizes declared = my_declared_sizes(*sizes, full);
    col.max_length = my_held<int32_t>(declared.max_length);
    col.precision = my_held<uint8_t>(declared.precision);
    col.scale = my_held<uint8_t>(declared.scale);
    if (sizes->sizes == host_sizes::clr) {
        col.is_assembly_type = true;
        col.system_type = nullptr;
    }
}

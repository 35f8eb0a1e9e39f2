// Hashes names as they are compared.
#include "script/host_script_names.hpp"

#include <cstdint>
#include <cstring>

// Eight bytes at a time. The bit that tells the case of letters is set in every byte, which makes a few other bytes
// alike too: they are told apart when they are compared.
static uint64_t my_mix(uint64_t hash, std::string_view text)
{
    constexpr uint64_t case_bits = 0x2020202020202020;
    constexpr uint64_t factor = 0x9E3779B97F4A7C15;
    while (!text.empty()) {
        uint64_t bytes = 0;
        const size_t count = text.size() < sizeof bytes ? text.size() : sizeof bytes;
        std::memcpy(&bytes, text.data(), count);
        hash = (hash ^ (bytes | case_bits)) * factor;
        hash ^= hash >> 32;
        text.remove_prefix(count);
    }
    return hash;
}

size_t host_name_hash::operator()(std::string_view name) const
{
    return my_mix(name.size(), name);
}

size_t host_name_hash::operator()(const host_qualified_name &name) const
{
    return my_mix(my_mix(name.schema.size(), name.schema), name.name);
}

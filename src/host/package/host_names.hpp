// Names as models write them: bracketed parts joined by dots, a closing bracket doubled, e.g. [Sales].[Order]]s].
#pragma once

#include "kt_owned.hpp"
#include "records/host_texts.hpp"

#include <array>

// The parts of a name between their brackets, with closing brackets still doubled.
struct host_name_parts {
    static constexpr size_t most = 6; // more than any object has
    std::array<std::string_view, most> parts;
    size_t count = 0;

    std::string_view last() const
    {
        return parts[count - 1];
    }
};

// Fails when the text is not such a name.
void host_split_name(KT_context *ctx, std::string_view text, host_name_parts &name);
// A part as it is called.
const char *host_keep_part(host_texts &texts, std::string_view part);

// The strings that a reader makes itself: they live as long as the store and keep their addresses.
#pragma once

#include "records/host_arena.hpp"

#include <cstring>
#include <string_view>

class host_texts {
  public:
    // A copy that ends at NUL. A NUL inside is kept, and ends the string for whoever reads it as one.
    const char *keep(std::string_view text)
    {
        char *copy = static_cast<char *>(arena_.take(text.size() + 1, 1));
        if (!text.empty())
            std::memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
        return copy;
    }

  private:
    host_arena arena_;
};

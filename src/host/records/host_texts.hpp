// The strings that a reader makes itself: they live as long as the store and keep their addresses.
#pragma once

#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

class host_texts {
  public:
    // A copy that ends at NUL. A NUL inside is kept, and ends the string for whoever reads it as one.
    const char *keep(std::string_view text)
    {
        if (text.size() >= room_)
            grow(text.size() + 1);
        char *copy = end_;
        if (!text.empty())
            std::memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
        end_ += text.size() + 1;
        room_ -= text.size() + 1;
        return copy;
    }

  private:
    void grow(size_t size)
    {
        static constexpr size_t chunk = 65536;
        room_ = size > chunk ? size : chunk;
        end_ = chunks_.emplace_back(std::make_unique<char[]>(room_)).get();
    }

    std::vector<std::unique_ptr<char[]>> chunks_;
    char *end_ = nullptr;
    size_t room_ = 0;
};

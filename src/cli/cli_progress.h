// Progress on a terminal, for what takes more than a second.
#pragma once

#include <chrono>
#include <cstdint>

class cli_progress {
  public:
    explicit cli_progress(const char *what);
    // A callback for operations that report: data is the cli_progress.
    static void step(void *data, uint32_t done, uint32_t total);
    // Removes the line again.
    void finish();

  private:
    void show(uint32_t done, uint32_t total);

    const char *what_;
    bool is_terminal_;
    bool is_shown_ = false;
    std::chrono::steady_clock::time_point next_;
};

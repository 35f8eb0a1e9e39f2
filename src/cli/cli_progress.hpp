// Progress on a terminal, for what takes more than a second.
#pragma once

#include <chrono>
#include <cstdint>
#include <thread>

class cli_progress {
  public:
    explicit cli_progress(const char *what);
    // A callback for operations that report: data is the cli_progress.
    static void step(void *data, uint32_t done, uint32_t total);
    // The same for the bytes of a file.
    static void step_of_file(void *data, const char *file, int64_t done, int64_t total);
    // Removes the line again.
    void finish();

  private:
    void show(uint32_t done, uint32_t total);

    const char *what_;
    bool is_terminal_;
    bool is_shown_ = false;
    std::chrono::steady_clock::time_point next_;
};

// The same for work that does not report: says how long it has taken, from the first second on, until it goes.
class cli_waiting {
  public:
    explicit cli_waiting(const char *what);

  private:
    std::jthread clock_; // not running where there is no terminal
};

#include "cli_progress.hpp"

#include "cli_files.hpp"

#include <condition_variable>
#include <mutex>
#include <unistd.h>

using namespace std::chrono_literals;

cli_progress::cli_progress(const char *what)
    : what_(what), is_terminal_(isatty(STDERR_FILENO) == 1), next_(std::chrono::steady_clock::now() + 1s)
{
}

void cli_progress::step(void *data, uint32_t done, uint32_t total)
{
    static_cast<cli_progress *>(data)->show(done, total);
}

void cli_progress::step_of_file(void *data, const char * /* file */, int64_t done, int64_t total)
{
    constexpr int64_t kilobyte = 1024;
    static_cast<cli_progress *>(data)->show(static_cast<uint32_t>(done / kilobyte),
                                            static_cast<uint32_t>(total / kilobyte));
}

void cli_progress::show(uint32_t done, uint32_t total)
{
    if (!is_terminal_ || total == 0)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_)
        return;
    next_ = now + 200ms;
    is_shown_ = true;
    cli_tell("\r%s: %u of %u (%u %%) ", what_, done, total, static_cast<unsigned>(uint64_t{done} * 100 / total));
}

void cli_progress::finish()
{
    if (is_shown_)
        cli_tell("\r\033[K");
    is_shown_ = false;
}

// Ends as soon as it is asked to, and takes its line away.
static void my_show_time(const std::stop_token &stop, const char *what)
{
    std::mutex mutex;
    std::condition_variable_any wake;
    std::unique_lock lock(mutex);
    unsigned seconds = 0;
    while (!wake.wait_for(lock, stop, 1s, [&] { return stop.stop_requested(); }))
        cli_tell("\r%s: %u s ", what, ++seconds);
    if (seconds)
        cli_tell("\r\033[K");
}

cli_waiting::cli_waiting(const char *what)
{
    if (isatty(STDERR_FILENO) == 1)
        clock_ = std::jthread([what](const std::stop_token &stop) { my_show_time(stop, what); });
}

// Violations as they are written: a line for people, JSON, CSV or SARIF.
#pragma once

#include "cli.hpp"
#include "tov_check.h"

#include <map>

class cli_violations {
  public:
    // Writes to standard output as they come, or to a file at the end. SARIF names the database as their place.
    cli_violations(KT_context *ctx, std::string format, std::string output, std::string database);
    ~cli_violations();
    cli_violations(const cli_violations &) = delete;
    cli_violations &operator=(const cli_violations &) = delete;

    // The callback of a check: data is the cli_violations.
    static void take(KT_context *ctx, void *data, const tov_client_violation *violation) noexcept;
    // Writes what is left. is_whole says whether the check came to its end.
    void finish(bool is_whole);
    // How many there are of each code, in the order of the codes' table.
    std::string summary() const;
    int64_t errors() const;

  private:
    void add(const tov_client_violation &violation);
    void add_to_list(const tov_client_violation &violation);
    void flush(size_t most);

    KT_context *ctx_;
    std::string format_;
    std::string output_;
    std::string database_;
    std::string text_;
    KT_varray *list_ = nullptr; // of findings, for SARIF
    std::map<const tov_client_violation_kind *, int64_t> counts_;
};

// Databases as businesses have them: keys, references, defaults, and what the server says of each column, from which
// its rules come. Each can be had in every form that create makes, and bare.
#pragma once

#include "tov_client.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

// How values are checked.
struct bench_form {
    const char *name;
    const char *title;
    int32_t checks;
    int32_t rules;
};

inline constexpr bench_form bench_forms[] = {
    {"constraints", "as constraints", TOV_CLIENT_CHECKS_CONSTRAINTS, TOV_CLIENT_RULES_BASIC},
    {"constraints_server", "as constraints, server's rules", TOV_CLIENT_CHECKS_CONSTRAINTS, TOV_CLIENT_RULES_SERVER},
    {"triggers", "as triggers", TOV_CLIENT_CHECKS_TRIGGERS, TOV_CLIENT_RULES_BASIC},
    {"triggers_server", "as triggers, server's rules", TOV_CLIENT_CHECKS_TRIGGERS, TOV_CLIENT_RULES_SERVER},
};

// A script with so many tables and columns.
std::string bench_business_script(uint32_t tables, uint32_t columns);

// The schema of a script, and empty databases of it in a folder that goes with it.
class bench_business {
  public:
    explicit bench_business(const std::string &script);
    ~bench_business();
    bench_business(const bench_business &) = delete;
    bench_business &operator=(const bench_business &) = delete;

    // The path of an empty database of a form, which is created once; null for one without any check of types.
    const std::string &database(const bench_form *form);
    std::string path(const std::string &name) const
    {
        return folder_ / name;
    }
    void create(const bench_form &form, const std::string &path) const;
    // Runs the bare statements in one transaction, as create does it.
    void create_bare(const std::string &path, bool with_indexes);
    // Makes the statements of tables and indexes without the checks of types, once.
    void make_bare_statements();

    tov_schema *schema = nullptr;

  private:
    std::filesystem::path folder_;
    std::map<std::string, std::string> databases_;
    std::vector<std::string> bare_tbls_;
    std::vector<std::string> bare_indexes_;
};

// One of so many tables and columns, kept for the whole run.
bench_business &bench_business_of(uint32_t tables, uint32_t columns);

// Processor time of this process in seconds.
double bench_processor_time();

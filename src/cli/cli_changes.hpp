// What has changed between two schemas, in the forms in which it is printed.
#pragma once

#include "cli_json.hpp"

struct cli_compare_options {
    bool by_id = false;
    std::vector<std::string> renames;
};

class cli_changes {
  public:
    cli_changes(KT_context *ctx, tov_schema *a, tov_schema *b, const cli_compare_options &options);
    ~cli_changes();
    cli_changes(const cli_changes &) = delete;
    cli_changes &operator=(const cli_changes &) = delete;

    bool is_same() const;
    // "text", "json" or "markdown".
    std::string as(const std::string &format) const;

  private:
    std::string text() const;
    std::string markdown() const;

    KT_context *ctx_;
    KT_vhash *changes_ = nullptr;
};

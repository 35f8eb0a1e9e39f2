// What could not be carried over unchanged, collected in the order in which it was met.
#pragma once

#include "records/host_catalogue.hpp"
#include "steps/host_finding_kinds.hpp"

class host_findings {
  public:
    explicit host_findings(KT_context *ctx) : list_(ctx)
    {
    }
    // Adds a finding; table, column and host_text may be null.
    void add(KT_context *ctx, host_finding_code code, const host_table *table, const host_column *col,
             const char *host_text, const std::string &reason);
    // Adds one about a place in a file, such as "orders.sql:12:5".
    void add_at(KT_context *ctx, host_finding_code code, const char *place, const char *host_text,
                const std::string &reason);
    // Hands the list over: null when nothing was found.
    void move_to(KT_varray **result)
    {
        list_.move_to(result);
    }

  private:
    kt_owned_varray list_;
};

// The end of a reason: what follows from nothing filling in the values of a column that allows no NULL.
std::string host_must_give_value(const host_column &col);

// A key as the server would write it, for the host text of a finding: UNIQUE [UQ_Code] ([Code]).
std::string host_key_text(const char *kind, const host_key &key);
std::string host_foreignkey_text(const host_foreignkey &fk);

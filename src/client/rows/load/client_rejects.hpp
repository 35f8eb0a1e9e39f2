// Rows that were refused, kept aside: as they stood, so that they can be corrected and loaded, and beside them a line
// of JSON for each that says why.
#pragma once

#include "kt_try.hpp"
#include "rows/load/client_target.hpp"

#include <cstdio>
#include <vector>

// Where a refused row is, and why it was refused.
struct client_refusal {
    std::string_view file;
    std::string_view tbl;
    int64_t row = 0; // counted from 1
    int64_t line = 0;
    int64_t position = 0;
    std::string_view col;   // empty where no column is to blame
    std::string_view value; // of the field
    client_reject reject = client_reject::none;
    std::string_view message;
};

// A line of JSON, its line end included.
void client_append_refusal(std::string &json, const client_refusal &refusal);

// A name for which there are no files of rejects in a directory: name, or Customers-2.dat for Customers.dat.
std::string client_find_reject_name(const std::string &directory, const std::string &name,
                                    const std::vector<std::string> &taken);

// The two files of rejects of one file of rows; written from their recorded ends on.
class client_reject_files {
  public:
    client_reject_files() = default;
    ~client_reject_files();
    client_reject_files(const client_reject_files &) = delete;
    client_reject_files &operator=(const client_reject_files &) = delete;

    // Takes names in a directory that is there. Files are made at the first reject; what follows these
    // sizes is of a load that was interrupted, and is cut off.
    void open(KT_context *ctx, const std::string &directory, const std::string &name, int64_t rows_size,
              int64_t lines_size);
    bool is_open() const noexcept
    {
        return !rows_name_.empty();
    }
    void add(KT_context *ctx, const std::string &raw_row, const client_refusal &refusal);
    // What the file of rows begins with, such as a mark or a line of column names; and what a row ends with that is
    // followed by another, though its own end is cut off.
    void set_form(std::string head, std::string row_end)
    {
        head_ = std::move(head);
        row_end_ = std::move(row_end);
    }
    // Brings everything to the files, and says how long they are.
    void flush(KT_context *ctx, int64_t *rows_size, int64_t *lines_size);

  private:
    void make(KT_context *ctx, const std::string &name, int64_t size, std::FILE **file);

    std::string rows_name_;
    std::string lines_name_;
    std::string head_;
    std::string row_end_;
    bool is_cut_ = false; // the last row lacks its end
    std::FILE *rows_ = nullptr;
    std::FILE *lines_ = nullptr;
    int64_t rows_size_ = 0;
    int64_t lines_size_ = 0;
};

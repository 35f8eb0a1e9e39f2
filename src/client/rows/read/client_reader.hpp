// Rows out of the text or bytes of a file, one after the other, whatever its format.
#pragma once

#include "rows/convert/client_moments.hpp"
#include "rows/convert/client_server_type.hpp"
#include "rows/convert/client_value.hpp"

#include <deque>
#include <memory>
#include <string>
#include <vector>

// What comes before the rows of an INSERT statement.
struct client_insert_head {
    std::string schema_name; // empty where it is not said
    std::string tbl_name;
    std::vector<std::string> cols; // that the values are for
    bool has_cols = false;         // or that nothing is said about them
    client_date_order date_order = client_date_order::mdy;
    int64_t number = 0; // of the statement
    std::string text;   // all of it
};

// A row as a file has it. All texts are borrowed from the data that it was read from, or from the row itself.
struct client_row {
    std::vector<client_field> fields;           // in the order of the columns that the reader was made for
    size_t size = 0;                            // bytes of the data that it takes, what ends it included
    client_reject reject = client_reject::none; // why its fields cannot be told apart
    size_t place = SIZE_MAX;                    // the field where that was found, if one
    std::string_view blamed;                    // what is to blame for it, such as a name that is not known
    bool has_absent = false;                    // a field is absent
    const client_insert_head *head = nullptr;   // of a script, whose rows say what table they are for
    std::string_view before;                    // what has to surround a row on its own
    std::string_view after;
    std::string unescaped;        // room for values whose form in the data is another
    std::deque<std::string> made; // values that the data does not hold
};

enum class client_step : uint8_t {
    row,  // a row was read, or is refused
    skip, // so much of the data (size) holds no row
    more, // the row does not end in the data: it has to be read again with more
    end,  // there is nothing more
};

class client_reader {
  public:
    client_reader() = default;
    client_reader(const client_reader &) = delete;
    client_reader &operator=(const client_reader &) = delete;
    virtual ~client_reader() = default;

    // Reads the row at the beginning of the data. is_all says that nothing follows the data: then the answer is not
    // more. May throw std::bad_alloc.
    virtual client_step read(std::string_view data, bool is_all, client_row &row) = 0;
};

// bcp's character files: fields are counted, since the field terminator ends each field but the last, and the row
// terminator the last only.
struct client_bcp_form {
    std::string field_end = "\t";
    std::string row_end = "\n";
    size_t count = 0;              // of fields in a row
    std::vector<bool> holds_lines; // by field: whether a value may hold the row terminator
};
std::unique_ptr<client_reader> client_make_bcp_reader(client_bcp_form form);

// CSV: rows end at line ends.
struct client_csv_form {
    std::string field_end = ",";
    std::string null_word;        // that a field without quotes has for NULL; empty where NULL is nothing
    bool null_is_guessed = false; // a word NULL without quotes, if it is not the one for NULL, may mean it after all
    bool skips_header = false;    // the first row has names
    size_t count = 0;             // of fields in a row
};
std::unique_ptr<client_reader> client_make_csv_reader(client_csv_form form);

// JSON: an array of objects, or one object after the other. Fields are in the order of these columns.
struct client_json_member {
    std::string name;
    bool is_binary = false;  // strings are Base64
    bool may_be_null = true; // what a missing member means; otherwise the column's default
};
std::unique_ptr<client_reader> client_make_json_reader(std::vector<client_json_member> members, bool at_start);

// bcp's native form (-N), which packages have, with a field for each of these types.
std::unique_ptr<client_reader> client_make_native_reader(const std::vector<client_server_type> &types);

// INSERT statements of T-SQL scripts. Fields are in the order of the statement's columns.
std::unique_ptr<client_reader> client_make_insert_reader();

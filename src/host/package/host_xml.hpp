// An XML file of a package, parsed as its pieces come.
#pragma once

#include "package/host_package.hpp"

#include <memory>

struct XML_ParserStruct;

// What is done with the elements of a file. Names come without their namespace prefix. A failure ends the parsing.
class host_xml_reader {
  public:
    virtual ~host_xml_reader() = default;
    // The attributes are pairs of name and value, with a null at the end.
    virtual void start(KT_context *ctx, std::string_view name, const char *const *attributes) = 0;
    virtual void end(KT_context *ctx) = 0;
    // Text between tags, in pieces; only while wants_text.
    virtual void text(std::string_view piece) = 0;
    bool wants_text = false;
};

class host_xml {
  public:
    // The name is for messages; it and the reader must outlive the parser.
    host_xml(const char *file_name, const host_package_limits &limits, host_xml_reader &reader);
    host_xml(const host_xml &) = delete;
    host_xml &operator=(const host_xml &) = delete;
    ~host_xml();

    void parse(KT_context *ctx, std::string_view piece);
    void finish(KT_context *ctx);

    // For the parser's own functions.
    struct state;

  private:
    void go_on(KT_context *ctx, std::string_view piece, bool is_last);

    const char *file_name_;
    std::unique_ptr<state> state_;
};

// The value of an attribute, null when there is none. Names are compared without their namespace prefix.
const char *host_attribute(const char *const *attributes, const char *name);

// One element of a model with all that it owns, as a small tree. A model is read as a sequence of such trees: each
// is thrown away before the next one is read, so a model of any size takes the memory of its largest element.
#pragma once

#include "package/host_xml.hpp"

#include <memory_resource>
#include <vector>

enum class host_node_kind : uint8_t { element, property, relationship, reference, annotation };

struct host_node {
    host_node_kind kind;
    std::string_view type;  // of an element or annotation
    std::string_view name;  // empty when absent
    std::string_view value; // of a property; of a reference: where the object is defined, when that is elsewhere
    host_node *next = nullptr;
    host_node *first = nullptr;
    host_node *last = nullptr;
};

// Null when there is none.
const host_node *host_find_child(const host_node &node, host_node_kind kind, std::string_view name);
// The value of a property, empty when it is absent.
std::string_view host_property(const host_node &element, std::string_view name);
// Booleans are written True and False, or in lower case.
bool host_is_true(const host_node &element, std::string_view property);
bool host_is_false(const host_node &element, std::string_view property);
// A whole number from 0 on, or `absent`; fails when the property is something else.
void host_number(KT_context *ctx, const host_node &element, std::string_view property, int64_t absent, int64_t *number);
// The first child of a relationship: a reference, an owned element, or null.
const host_node *host_related(const host_node &element, std::string_view relationship);
// The name in the first reference of a relationship, empty when there is none.
std::string_view host_reference(const host_node &element, std::string_view relationship);
bool host_has_annotation(const host_node &element, std::string_view type);

// Calls visit(ctx, child) for each child of a relationship until one fails.
template <class Visit>
void host_for_each(KT_context *ctx, const host_node &element, std::string_view relationship, Visit &&visit)
{
    for (const host_node *child = host_related(element, relationship); child; child = child->next) {
        visit(ctx, *child);
        if (kt_has_err(ctx))
            return;
    }
}

// What is done with the elements directly in the model.
class host_element_reader {
  public:
    virtual ~host_element_reader() = default;
    // Says whether the element's tree is wanted; all others are skipped unread.
    virtual void look(KT_context *ctx, std::string_view type, std::string_view name, bool *is_wanted) = 0;
    // The tree lives until this returns.
    virtual void take(KT_context *ctx, const host_node &element) = 0;
};

// Builds the trees out of the events of model.xml.
class host_tree_builder : public host_xml_reader {
  public:
    explicit host_tree_builder(host_element_reader &elements);
    void start(KT_context *ctx, std::string_view name, const char *const *attributes) override;
    void end(KT_context *ctx) override;
    void text(std::string_view piece) override;

  private:
    void start_outside(KT_context *ctx, std::string_view name, const char *const *attributes);
    void start_inside(std::string_view name, const char *const *attributes);
    host_node *add_node(host_node_kind kind, const char *const *attributes);
    std::string_view keep(const char *text);

    host_element_reader &elements_;
    std::vector<char> room_;
    std::pmr::monotonic_buffer_resource arena_;
    std::vector<host_node *> open_; // the element's tags that are open; a tag without a node stands for its parent's
    std::string text_;
    uint32_t depth_ = 0;      // of the document and the model around the elements
    uint32_t skip_depth_ = 0; // of tags inside one that is skipped, itself included
};

// The five shapes of a model: elements, their properties, relationships to other elements, references by name, and
// annotations.
#include "package/host_model_tree.hpp"

#include "kt_folded.hpp"

#include <charconv>
#include <cstring>
#include <new>

#define KT_HERE "src/host/package/host_model_tree"

static constexpr size_t room_size = 65536;

const host_node *host_find_child(const host_node &node, host_node_kind kind, std::string_view name)
{
    const host_node *child = node.first;
    while (child && (child->kind != kind || child->name != name))
        child = child->next;
    return child;
}

std::string_view host_property(const host_node &element, std::string_view name)
{
    const host_node *property = host_find_child(element, host_node_kind::property, name);
    return property ? property->value : std::string_view{};
}

static bool my_has_value(const host_node &element, std::string_view property, std::string_view value)
{
    return kt_equal_folded(host_property(element, property), value);
}

bool host_is_true(const host_node &element, std::string_view property)
{
    return my_has_value(element, property, "true");
}

bool host_is_false(const host_node &element, std::string_view property)
{
    return my_has_value(element, property, "false");
}

void host_number(KT_context *ctx, const host_node &element, std::string_view property, int64_t absent, int64_t *number)
{
    constexpr int64_t greatest = 1'000'000'000;
    const std::string_view text = host_property(element, property);
    int64_t value = absent;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (!text.empty() && (code != std::errc{} || end != text.data() + text.size() || value < 0 || value > greatest))
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s is '%.40s', not a number from 0 to %lld", std::string(property).c_str(),
                std::string(text).c_str(), static_cast<long long>(greatest));
    *number = value;
}

const host_node *host_related(const host_node &element, std::string_view relationship)
{
    const host_node *node = host_find_child(element, host_node_kind::relationship, relationship);
    return node ? node->first : nullptr;
}

std::string_view host_reference(const host_node &element, std::string_view relationship)
{
    const host_node *child = host_related(element, relationship);
    return child && child->kind == host_node_kind::reference ? child->name : std::string_view{};
}

bool host_has_annotation(const host_node &element, std::string_view type)
{
    for (const host_node *child = element.first; child; child = child->next) {
        if (child->kind == host_node_kind::annotation && child->type == type)
            return true;
    }
    return false;
}

host_tree_builder::host_tree_builder(host_element_reader &elements)
    : elements_(elements), room_(room_size), arena_(room_.data(), room_.size())
{
}

std::string_view host_tree_builder::keep(const char *text)
{
    if (!text || !*text)
        return {};
    const size_t size = strlen(text);
    auto *copy = static_cast<char *>(arena_.allocate(size, 1));
    std::memcpy(copy, text, size);
    return {copy, size};
}

host_node *host_tree_builder::add_node(host_node_kind kind, const char *const *attributes)
{
    const char *value = host_attribute(attributes, kind == host_node_kind::reference ? "ExternalSource" : "Value");
    const bool is_typed = kind == host_node_kind::element || kind == host_node_kind::annotation;
    auto *node = new (arena_.allocate(sizeof(host_node), alignof(host_node)))
        host_node{kind, is_typed ? keep(host_attribute(attributes, "Type")) : std::string_view{},
                  keep(host_attribute(attributes, "Name")), keep(value)};
    if (open_.empty())
        return node;
    host_node *parent = open_.back();
    (parent->last ? parent->last->next : parent->first) = node;
    parent->last = node;
    return node;
}

void host_tree_builder::start(KT_context *ctx, std::string_view name, const char *const *attributes)
{
    if (skip_depth_ > 0)
        skip_depth_++;
    else if (open_.empty())
        KT_TRY(start_outside(ctx, name, attributes));
    else
        start_inside(name, attributes);
}

void host_tree_builder::start_outside(KT_context *ctx, std::string_view name, const char *const *attributes)
{
    constexpr std::string_view around[] = {"DataSchemaModel", "Model"};
    if (depth_ == 0 && name != around[0])
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "expected DataSchemaModel, the model of a database, where '%.40s' is",
                std::string(name).c_str());
    if (depth_ < 2 && name == around[depth_]) {
        depth_++;
        return;
    }
    const char *type = host_attribute(attributes, "Type");
    const char *element_name = host_attribute(attributes, "Name");
    bool is_wanted = false;
    if (depth_ == 2 && name == "Element" && type)
        KT_TRY(elements_.look(ctx, type, element_name ? element_name : "", &is_wanted));
    if (is_wanted)
        open_.push_back(add_node(host_node_kind::element, attributes));
    else
        skip_depth_ = 1;
}

void host_tree_builder::start_inside(std::string_view name, const char *const *attributes)
{
    static constexpr std::pair<std::string_view, host_node_kind> kinds[] = {
        {"Property", host_node_kind::property},     {"Relationship", host_node_kind::relationship},
        {"References", host_node_kind::reference},  {"Element", host_node_kind::element},
        {"Annotation", host_node_kind::annotation},
    };
    const bool is_value = name == "Value" && open_.back()->kind == host_node_kind::property;
    if (name == "Entry" || is_value) {
        wants_text = is_value;
        text_.clear();
        open_.push_back(open_.back());
        return;
    }
    for (const auto &[tag, kind] : kinds) {
        if (tag == name) {
            open_.push_back(add_node(kind, attributes));
            return;
        }
    }
    skip_depth_ = 1;
}

void host_tree_builder::text(std::string_view piece)
{
    text_ += piece;
}

void host_tree_builder::end(KT_context *ctx)
{
    if (skip_depth_ > 0) {
        skip_depth_--;
        return;
    }
    if (open_.empty()) {
        depth_--;
        return;
    }
    host_node *node = open_.back();
    open_.pop_back();
    if (wants_text) {
        wants_text = false;
        node->value = keep(text_.c_str());
    }
    if (open_.empty()) {
        KT_TRY(elements_.take(ctx, *node));
        arena_.release();
    }
}

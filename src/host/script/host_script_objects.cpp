// The index of names: open addressing with linear probing, at most half full.
#include "script/host_script_objects.hpp"

static uint32_t my_hash(const host_qualified_name &name)
{
    return static_cast<uint32_t>(host_name_hash{}(name));
}

// The slot of the object, or the free one where it belongs.
size_t host_script_objects::find_slot(const host_qualified_name &name, uint32_t hash) const
{
    const size_t mask = slots_.size() - 1;
    size_t at = hash & mask;
    for (; slots_[at].number != 0; at = (at + 1) & mask) {
        if (slots_[at].hash != hash)
            continue;
        const host_script_object &object = objects_[slots_[at].number - 1];
        if (host_name_equal{}({object.schema, object.name}, name))
            break;
    }
    return at;
}

void host_script_objects::grow()
{
    std::vector<slot> larger(2 * slots_.size());
    const size_t mask = larger.size() - 1;
    for (const slot &old : slots_) {
        if (old.number == 0)
            continue;
        size_t at = old.hash & mask;
        while (larger[at].number != 0)
            at = (at + 1) & mask;
        larger[at] = old;
    }
    slots_ = std::move(larger);
}

host_script_object *host_script_objects::find(std::string_view schema, std::string_view name)
{
    const host_qualified_name wanted{schema, name};
    const slot &found = slots_[find_slot(wanted, my_hash(wanted))];
    return found.number == 0 ? nullptr : &objects_[found.number - 1];
}

host_script_object *host_script_objects::add(const host_script_object &object)
{
    const host_qualified_name name{object.schema, object.name};
    const uint32_t hash = my_hash(name);
    size_t at = find_slot(name, hash);
    if (slots_[at].number != 0)
        return nullptr;
    if (2 * ++count_ > slots_.size()) {
        grow();
        at = find_slot(name, hash);
    }
    objects_.push_back(object);
    slots_[at] = {hash, static_cast<uint32_t>(objects_.size())};
    return &objects_.back();
}

// Those that were only there because the slot was not free move up, so that no trace of the object is left: a script
// may make and drop one name a thousand times.
void host_script_objects::forget(host_script_object &object)
{
    const size_t mask = slots_.size() - 1;
    const host_qualified_name name{object.schema, object.name};
    size_t hole = find_slot(name, my_hash(name));
    for (size_t at = (hole + 1) & mask; slots_[at].number != 0; at = (at + 1) & mask) {
        const size_t home = slots_[at].hash & mask;
        if (((at - home) & mask) < ((at - hole) & mask))
            continue;
        slots_[hole] = slots_[at];
        hole = at;
    }
    slots_[hole] = {};
    object.kind = nullptr;
    count_--;
}

// What the names within schemas mean, in the order in which they were taken. Objects keep their addresses.
#pragma once

#include "script/host_script_names.hpp"

#include <cstdint>
#include <deque>
#include <vector>

struct host_script_table;

// What a name within a schema stands for, by the letters of the server's catalogue: U a table, PK, UQ, F, C and D
// constraints (D also a default object), R a rule, V a view, P a procedure, FN a function, TR a trigger, SN a synonym,
// SO a sequence.
struct host_script_object {
    const char *kind = nullptr;
    const char *schema = nullptr;
    const char *name = nullptr;
    host_script_table *table = nullptr; // the table, or that of the constraint
};

// A large script has several objects for each table, and asks for a name before it takes it: the index keeps the
// hashes beside each other, so that an object is looked at only when it is the one.
class host_script_objects {
  public:
    host_script_object *find(std::string_view schema, std::string_view name);
    // Null when the name is taken.
    host_script_object *add(const host_script_object &object);
    // The object has no kind afterwards, and its name is free.
    void forget(host_script_object &object);

    template <class Take> void each(Take take) const
    {
        for (const host_script_object &object : objects_) {
            if (object.kind)
                take(object);
        }
    }

  private:
    struct slot {
        uint32_t hash = 0;
        uint32_t number = 0; // of the object, from 1; 0 in a slot that is free
    };

    size_t find_slot(const host_qualified_name &name, uint32_t hash) const;
    void grow();

    std::deque<host_script_object> objects_; // forgotten ones too
    size_t count_ = 0;                       // without those
    std::vector<slot> slots_ = std::vector<slot>(64);
};

// The index of names against std::map, through thousands of random steps.
#include "script/host_script_objects.hpp"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

TEST(ScriptObjects, NamesAreFoundAfterOthersComeAndGo)
{
    std::vector<std::string> names;
    for (int n = 0; n < 500; n++)
        names.push_back("Name" + std::to_string(n));
    host_script_objects objects;
    std::map<std::string, host_script_object *> expected;
    std::mt19937 random(7);
    for (int step = 0; step < 20000; step++) {
        const std::string &name = names[random() % names.size()];
        const auto known = expected.find(name);
        host_script_object *found = objects.find("DBO", name);
        ASSERT_EQ(found, known == expected.end() ? nullptr : known->second) << name << " at step " << step;
        if (found && step % 3 != 0) {
            objects.forget(*found);
            expected.erase(known);
        } else if (!found) {
            expected[name] = objects.add({"U", "dbo", name.c_str(), nullptr});
            ASSERT_NE(expected[name], nullptr) << name;
        } else {
            EXPECT_EQ(objects.add({"V", "dbo", name.c_str(), nullptr}), nullptr) << name;
        }
    }
    size_t count = 0;
    objects.each(
        [&count, &expected](const host_script_object &object) { count += expected.contains(object.name) ? 1U : 0U; });
    EXPECT_EQ(count, expected.size());
}

TEST(ScriptObjects, OneNameMayBeMadeAndDroppedVeryOften)
{
    host_script_objects objects;
    for (int n = 0; n < 200000; n++) {
        host_script_object *object = objects.add({"U", "dbo", "#rows", nullptr});
        ASSERT_NE(object, nullptr) << n;
        objects.forget(*object);
    }
    EXPECT_EQ(objects.find("dbo", "#rows"), nullptr);
}

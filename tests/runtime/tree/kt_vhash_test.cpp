// Maps: making, adding, replacing, removing.

#include "failing_alloc.hpp"
#include "kt_test.hpp"
#include "tree/kt_tree.hpp"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

// A map below the outermost one, as nearly all are; the two are laid out differently.
class VhashTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        KT_vhash__alloc(ctx, &root);
        ASSERT_OK(ctx);
    }
    void TearDown() override
    {
        KT_vhash__free(ctx, root);
        ContextTest::TearDown();
    }
    KT_vhash *child(const char *key)
    {
        KT_vhash *map = nullptr;
        KT_vhash__addnew__vhash(ctx, root, key, &map);
        EXPECT_OK(ctx);
        return map;
    }
    std::string json()
    {
        return json_of(ctx, root);
    }

    KT_vhash *root = nullptr;
};

TEST_F(VhashTest, StartsEmpty)
{
    uint32_t count = 99;
    KT_vhash__count(ctx, root, &count);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(json(), "{}");
}

TEST_F(VhashTest, FreeingNothingIsAllowed)
{
    KT_vhash__free(ctx, nullptr);
}

TEST_F(VhashTest, KeepsPairsInOrderOfFirstAddition)
{
    KT_vhash__add__int64(ctx, root, "z", 1);
    KT_vhash__add__string__sz(ctx, root, "a", "text");
    KT_vhash__add__bool(ctx, root, "m", 5);
    KT_vhash__add__null(ctx, root, "n");
    KT_vhash__add__double(ctx, root, "d", 1.5);
    KT_vhash__update__int64(ctx, root, "z", 2);
    EXPECT_OK(ctx);
    EXPECT_EQ(json(), R"({"z":2,"a":"text","m":true,"n":null,"d":1.5})");
}

TEST_F(VhashTest, ComparesKeysByteForByte)
{
    KT_vhash__add__int64(ctx, root, "Key", 1);
    KT_vhash__add__int64(ctx, root, "key", 2);
    KT_vhash__add__int64(ctx, root, "", 3);
    EXPECT_OK(ctx);
    EXPECT_EQ(json(), R"({"Key":1,"key":2,"":3})");
}

TEST_F(VhashTest, StoresANullTextAsANullValue)
{
    KT_vhash__add__string__sz(ctx, root, "a", nullptr);
    KT_vhash__update__string__sz(ctx, root, "b", nullptr);
    EXPECT_OK(ctx);
    EXPECT_EQ(json(), R"({"a":null,"b":null})");
}

TEST_F(VhashTest, RefusesToAddAKeyTwiceAndKeepsTheFirst)
{
    using add = void (*)(KT_context *, KT_vhash *);
    const add adds[] = {
        [](KT_context *context, KT_vhash *map) { KT_vhash__add__int64(context, map, "k", 2); },
        [](KT_context *context, KT_vhash *map) { KT_vhash__add__double(context, map, "k", 2); },
        [](KT_context *context, KT_vhash *map) { KT_vhash__add__string__sz(context, map, "k", "2"); },
        [](KT_context *context, KT_vhash *map) { KT_vhash__add__bool(context, map, "k", 1); },
        [](KT_context *context, KT_vhash *map) { KT_vhash__add__null(context, map, "k"); },
        [](KT_context *context, KT_vhash *map) {
            KT_vhash *made = nullptr;
            KT_vhash__addnew__vhash(context, map, "k", &made);
            EXPECT_EQ(made, nullptr);
        },
        [](KT_context *context, KT_vhash *map) {
            KT_varray *made = nullptr;
            KT_vhash__addnew__varray(context, map, "k", &made);
            EXPECT_EQ(made, nullptr);
        },
        [](KT_context *context, KT_vhash *map) { KT_vhash__addcopy__vhash(context, map, "k", map); },
    };
    KT_vhash__add__int64(ctx, root, "k", 1);
    for (add again : adds) {
        again(ctx, root);
        EXPECT_ERROR(ctx, KT_ERR_DUPLICATE_KEY, "key 'k' is already there");
        reset();
        EXPECT_EQ(json(), R"({"k":1})");
    }
}

TEST_F(VhashTest, UpdateReplacesAValueOfAnyTypeInPlace)
{
    KT_vhash *map = child("k");
    KT_vhash__add__string__sz(ctx, map, "long", "a text that does not fit into a variant");
    KT_vhash__add__int64(ctx, root, "after", 1);
    KT_vhash__update__bool(ctx, root, "k", 0);
    EXPECT_EQ(json(), R"({"k":false,"after":1})");
    KT_vhash__update__string__sz(ctx, root, "k", "another text that does not fit into a variant");
    EXPECT_EQ(json(), R"({"k":"another text that does not fit into a variant","after":1})");
    KT_vhash__update__double(ctx, root, "k", -0.5);
    KT_vhash__update__null(ctx, root, "after");
    EXPECT_EQ(json(), R"({"k":-0.5,"after":null})");
    KT_vhash__update__int64(ctx, root, "k", INT64_MIN);
    EXPECT_EQ(json(), R"({"k":-9223372036854775808,"after":null})");
    EXPECT_OK(ctx);
}

TEST_F(VhashTest, UpdateMayReadTheTextThatItReplaces)
{
    for (const char *text : {"short", "a text that does not fit into a variant"}) {
        const char *stored = nullptr;
        KT_vhash__update__string__sz(ctx, root, "k", text);
        KT_vhash__get__sz(ctx, root, "k", &stored);
        KT_vhash__update__string__sz(ctx, root, "k", stored);
        KT_vhash__get__sz(ctx, root, "k", &stored);
        EXPECT_STREQ(stored, text);
    }
}

TEST_F(VhashTest, EnsureFindsOrAddsAChild)
{
    KT_vhash *map = nullptr, *same_map = nullptr;
    KT_varray *list = nullptr, *same_list = nullptr;
    KT_vhash__ensure__vhash(ctx, root, "map", &map);
    KT_vhash__ensure__varray(ctx, root, "list", &list);
    KT_vhash__ensure__vhash(ctx, root, "map", &same_map);
    KT_vhash__ensure__varray(ctx, root, "list", &same_list);
    EXPECT_OK(ctx);
    EXPECT_EQ(map, same_map);
    EXPECT_EQ(list, same_list);
    EXPECT_EQ(json(), R"({"map":{},"list":[]})");
}

TEST_F(VhashTest, EnsureRefusesAValueOfAnotherType)
{
    KT_vhash *map = nullptr;
    KT_varray *list = nullptr;
    KT_vhash__add__null(ctx, root, "k");
    KT_vhash__ensure__vhash(ctx, root, "k", &map);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "key 'k' is not a map");
    reset();
    KT_vhash__ensure__varray(ctx, root, "k", &list);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "key 'k' is not a list");
    reset();
    EXPECT_EQ(map, nullptr);
    EXPECT_EQ(list, nullptr);
}

TEST_F(VhashTest, RemoveKeepsTheOrderOfTheOthers)
{
    for (const char *victim : {"a", "b", "c"}) {
        KT_vhash *map = child(victim);
        for (const char *key : {"a", "b", "c"})
            KT_vhash__add__string__sz(ctx, map, key, key);
        KT_vhash__remove(ctx, map, victim);
        KT_vhash__add__string__sz(ctx, map, "d", "d");
    }
    EXPECT_OK(ctx);
    EXPECT_EQ(json(), R"({"a":{"b":"b","c":"c","d":"d"},"b":{"a":"a","c":"c","d":"d"},"c":{"a":"a","b":"b","d":"d"}})");
}

TEST_F(VhashTest, RemoveRequiresTheKey)
{
    KT_vhash__remove(ctx, root, "k");
    EXPECT_ERROR(ctx, KT_ERR_KEY_NOT_FOUND, "no key 'k'");
    reset();
}

TEST_F(VhashTest, RemoveIfPresentSaysWhetherItDid)
{
    KT_bool removed = 7;
    KT_vhash__add__int64(ctx, root, "k", 1);
    KT_vhash__remove_if_present(ctx, root, "k", &removed);
    EXPECT_EQ(removed, 1);
    KT_vhash__remove_if_present(ctx, root, "k", &removed);
    EXPECT_EQ(removed, 0);
    KT_vhash__remove_if_present(ctx, root, "k", nullptr);
    EXPECT_OK(ctx);
}

TEST_F(VhashTest, FailuresNameTheRuntimeAsTheirPlace)
{
    KT_vhash__remove(ctx, root, "k");
    const char *file = nullptr;
    int32_t line = 0;
    KT_context__get_nth_err_stackframe(ctx, 0, &file, &line);
    EXPECT_STREQ(file, "src/runtime/kt_vhash");
    EXPECT_GT(line, 0);
    reset();
}

TEST_F(VhashTest, CopiesDeeply)
{
    KT_vhash *source = nullptr;
    KT_vhash__alloc__from_json__sz(
        ctx, &source,
        R"({"a":1,"b":[1,"x",null,[],{"c":{}}],"d":{"e":true,"f":1.5,"g":"a text that does not fit into a variant"}})");
    ASSERT_OK(ctx);
    const std::string before = json_of(ctx, source);
    KT_vhash__addcopy__vhash(ctx, root, "copy", source);
    KT_vhash__free(ctx, source);
    EXPECT_OK(ctx);
    EXPECT_EQ(json(), "{\"copy\":" + before + "}");
}

// A map on the way down has more members behind the one that is gone into.
std::string branching(int depth)
{
    std::string text = "{}";
    while (depth-- > 0)
        text = depth % 2 ? "{\"deeper\":" + text + ",\"behind\":[{},[],1,\"a text that does not fit into a variant\"]}"
                         : "[" + text + ",{\"a key of more than fourteen\":null}]";
    return "{\"top\":" + text + ",\"behind\":true}";
}

TEST_F(VhashTest, CopiesBranchesOfAnyDepth)
{
    for (const int depth : {0, 1, 2, 15, 16, 17, 33, 100, 1000}) {
        SCOPED_TRACE(depth);
        KT_vhash *source = nullptr;
        KT_vhash__alloc__from_json__sz(ctx, &source, branching(depth).c_str());
        ASSERT_OK(ctx);
        KT_vhash__addcopy__vhash(ctx, root, "copy", source);
        KT_vhash__free(ctx, source);
        EXPECT_OK(ctx);
        EXPECT_EQ(json(), "{\"copy\":" + branching(depth) + "}");
        KT_vhash__remove(ctx, root, "copy");
    }
}

TEST_F(VhashTest, CopiesAMapIntoItself)
{
    KT_vhash *map = child("map");
    KT_vhash__add__int64(ctx, map, "n", 1);
    KT_vhash__addcopy__vhash(ctx, map, "self", map);
    KT_vhash__addcopy__vhash(ctx, map, "all", root);
    EXPECT_OK(ctx);
    EXPECT_EQ(json(), R"({"map":{"n":1,"self":{"n":1},"all":{"map":{"n":1,"self":{"n":1}}}}})");
}

TEST_F(VhashTest, CopiesOrderAndContentAfterRemovals)
{
    KT_vhash *map = child("map");
    for (int n = 0; n < 20; n++)
        KT_vhash__add__int64(ctx, map, ("key" + std::to_string(n)).c_str(), n);
    for (int n = 0; n < 20; n += 3)
        KT_vhash__remove(ctx, map, ("key" + std::to_string(n)).c_str());
    KT_vhash__add__int64(ctx, map, "key0", 100);
    const std::string before = json_of(ctx, map);
    KT_vhash__addcopy__vhash(ctx, root, "copy", map);
    EXPECT_OK(ctx);
    EXPECT_EQ(json(), "{\"map\":" + before + ",\"copy\":" + before + "}");
}

// What was handed out stays where it is while other pairs come and go.
TEST_F(VhashTest, BorrowedTextsKeysAndChildrenStay)
{
    // The outermost map, the first one with these keys, and the next one, which shares its layout with others.
    for (const char *name : {"", "first", "next"}) {
        SCOPED_TRACE(name);
        KT_vhash *map = *name ? child(name) : root;
        std::vector<std::pair<const char *, const char *>> borrowed;
        std::vector<KT_vhash *> children;
        for (int n = 0; n < 200; n++) {
            const std::string key = (n % 7 ? "k" : "a key that is longer than usual ") + std::to_string(n);
            const std::string text = (n % 5 ? "v" : "a value that is longer than usual ") + std::to_string(n);
            KT_vhash__add__string__sz(ctx, map, key.c_str(), text.c_str());
            const char *held_key = nullptr, *held_text = nullptr;
            uint32_t count = 0;
            KT_vhash__count(ctx, map, &count);
            KT_vhash__get_nth_pair__sz(ctx, map, count - 1, &held_key, &held_text);
            ASSERT_OK(ctx);
            borrowed.emplace_back(held_key, held_text);
            if (n % 10 == 9) { // every tenth pair goes again, a child comes in its place
                KT_vhash__remove(ctx, map, ("k" + std::to_string(n - 1)).c_str());
                if (KT_context__has_err(ctx))
                    reset(); // it had the longer key
                else
                    borrowed.erase(borrowed.end() - 2);
                KT_vhash *made = nullptr;
                KT_vhash__addnew__vhash(ctx, map, ("child" + std::to_string(n)).c_str(), &made);
                children.push_back(made);
            }
        }
        for (const auto &[key, text] : borrowed) {
            const char *stored = nullptr;
            KT_vhash__get__sz(ctx, map, key, &stored);
            ASSERT_OK(ctx);
            EXPECT_EQ(stored, text);
        }
        for (size_t n = 0; n < children.size(); n++) {
            KT_vhash *stored = nullptr;
            KT_vhash__get__vhash(ctx, map, ("child" + std::to_string(10 * n + 9)).c_str(), &stored);
            EXPECT_EQ(stored, children[n]);
        }
        EXPECT_OK(ctx);
    }
}

// Random operations against a plain list of pairs, in maps of every layout.
TEST_F(VhashTest, BehavesAsAListOfPairs)
{
    std::mt19937 random(20);
    for (int round = 0; round < 300; round++) {
        KT_vhash *map = nullptr;
        KT_vhash__ensure__vhash(ctx, root, ("m" + std::to_string(round % 10)).c_str(), &map);
        std::vector<std::pair<std::string, std::string>> model;
        uint32_t count = 0;
        KT_vhash__count(ctx, map, &count);
        while (count--)
            KT_vhash__remove(ctx, map, [&] {
                const char *key = nullptr;
                KT_vhash__get_nth_pair(ctx, map, count, &key, nullptr);
                return key;
            }());
        const auto keys = 1 + random() % 40;
        for (auto step = random() % 150; step > 0; step--) {
            const std::string key =
                (random() % 5 ? "key" : "a key longer than fourteen ") + std::to_string(random() % keys);
            const std::string text(random() % 30, static_cast<char>('a' + random() % 26));
            const auto found = std::find_if(model.begin(), model.end(), [&](auto &pair) { return pair.first == key; });
            switch (random() % 4) {
            case 0:
            case 1:
                KT_vhash__add__string__sz(ctx, map, key.c_str(), text.c_str());
                EXPECT_EQ(KT_context__err_code(ctx), found == model.end() ? 0 : KT_ERR_DUPLICATE_KEY);
                reset();
                if (found == model.end())
                    model.emplace_back(key, text);
                break;
            case 2:
                KT_vhash__update__string__sz(ctx, map, key.c_str(), text.c_str());
                if (found == model.end())
                    model.emplace_back(key, text);
                else
                    found->second = text;
                break;
            default:
                KT_bool removed = 0;
                KT_vhash__remove_if_present(ctx, map, key.c_str(), &removed);
                EXPECT_EQ(removed, found != model.end());
                if (removed)
                    model.erase(found);
            }
        }
        KT_vhash__count(ctx, map, &count);
        ASSERT_EQ(count, model.size());
        for (uint32_t n = 0; n < count; n++) {
            const char *key = nullptr, *by_position = nullptr, *by_key = nullptr;
            KT_vhash__get_nth_pair__sz(ctx, map, n, &key, &by_position);
            KT_vhash__get__sz(ctx, map, model[n].first.c_str(), &by_key);
            ASSERT_OK(ctx);
            EXPECT_EQ(key, model[n].first);
            EXPECT_EQ(by_position, model[n].second);
            EXPECT_EQ(by_key, by_position);
        }
    }
}

TEST_F(VhashTest, HoldsManyPairs)
{
    KT_vhash *map = child("map");
    const uint32_t count = 100000;
    for (uint32_t n = 0; n < count; n++)
        KT_vhash__add__int64(ctx, map, std::to_string(n * 7).c_str(), n);
    EXPECT_OK(ctx);
    for (uint32_t n = 0; n < count; n += 997) {
        const char *key = nullptr;
        uint64_t value = 0;
        int64_t by_key = 0;
        KT_vhash__get_nth_pair__uint64(ctx, map, n, &key, &value);
        KT_vhash__get__int64(ctx, map, std::to_string(n * 7).c_str(), &by_key);
        EXPECT_EQ(key, std::to_string(n * 7));
        EXPECT_EQ(value, n);
        EXPECT_EQ(by_key, n);
    }
    EXPECT_OK(ctx);
}

// Deeper than any stack of calls could go.
TEST_F(VhashTest, FreesAndCopiesAnyDepth)
{
    KT_vhash *map = child("deep");
    for (int depth = 0; depth < 200000; depth++) {
        KT_varray *list = nullptr;
        if (depth % 2)
            KT_vhash__addnew__vhash(ctx, map, "m", &map);
        else {
            KT_vhash__addnew__varray(ctx, map, "l", &list);
            KT_varray__appendnew__vhash(ctx, list, &map);
        }
    }
    KT_vhash__add__string__sz(ctx, map, "bottom", "here");
    ASSERT_OK(ctx);
    KT_vhash *deep = nullptr;
    KT_vhash__get__vhash(ctx, root, "deep", &deep);
    KT_vhash__addcopy__vhash(ctx, root, "copy", deep);
    ASSERT_OK(ctx);
    KT_vhash *copy = nullptr;
    KT_vhash__get__vhash(ctx, root, "copy", &copy);
    EXPECT_EQ(json_of(ctx, copy), json_of(ctx, deep));
    KT_vhash__remove(ctx, root, "deep");
    KT_vhash__remove(ctx, root, "copy");
    EXPECT_OK(ctx);
    EXPECT_EQ(json(), "{}");
}

// Memory of what was removed serves again: filling and emptying a tree over and over does not grow it.
TEST_F(VhashTest, ReusesMemory)
{
    const auto fill_and_empty = [&] {
        for (int n = 0; n < 50; n++) {
            KT_vhash *map = child("m");
            KT_varray *list = nullptr;
            for (int i = 0; i < 20; i++)
                KT_vhash__add__string__sz(
                    ctx, map, ((i % 2 ? "key" : "a key of more than fourteen ") + std::to_string(i * n)).c_str(),
                    "a text that does not fit into a variant");
            reset(); // n = 0 repeats its key
            // A removal in the middle gives the map an order of its own; keys behind it are shared with no other map.
            if (n % 3)
                KT_vhash__remove(ctx, map, ("key" + std::to_string(n)).c_str());
            KT_vhash__add__null(ctx, map, "another key of more than fourteen");
            KT_vhash__addnew__varray(ctx, map, "l", &list);
            for (int i = 0; i < 40; i++)
                KT_varray__append__string__sz(ctx, list, std::string(static_cast<size_t>(i * 7), 'x').c_str());
            KT_vhash__remove(ctx, root, "m");
        }
    };
    fill_and_empty();
    fill_and_empty();
    kt_failing_alloc watch(kt_failing_alloc::mode::never);
    watch.next();
    for (int round = 0; round < 30; round++)
        fill_and_empty();
    EXPECT_EQ(watch.leaked(), 0u) << "further rounds took new memory";
    EXPECT_OK(ctx);
}

// Keys that no map began with before are each map's own, and go with it.
TEST_F(VhashTest, ReusesTheMemoryOfKeysOfEveryLength)
{
    int count = 0;
    const auto add_and_remove = [&] {
        for (size_t length = 10; length < 80; length++) {
            std::string key = std::to_string(count++);
            key.resize(length, 'k');
            KT_vhash__add__null(ctx, child("m"), key.c_str());
            KT_vhash__remove(ctx, root, "m");
        }
    };
    add_and_remove();
    kt_failing_alloc watch(kt_failing_alloc::mode::never);
    watch.next();
    for (int round = 0; round < 300; round++)
        add_and_remove();
    EXPECT_EQ(watch.leaked(), 0u) << "further rounds took new memory";
    EXPECT_OK(ctx);
}

// Every operation, at every place where memory can run out.
struct sweep_case {
    const char *name;
    void (*act)(KT_context *, KT_vhash *);
};

const sweep_case sweep_cases[] = {
    {"add an integer", [](KT_context *ctx, KT_vhash *map) { KT_vhash__add__int64(ctx, map, "new", 1); }},
    {"add under a long key",
     [](KT_context *ctx, KT_vhash *map) { KT_vhash__add__null(ctx, map, std::string(5000, 'k').c_str()); }},
    {"add a long text",
     [](KT_context *ctx, KT_vhash *map) {
         KT_vhash__add__string__sz(ctx, map, "new", std::string(5000, 't').c_str());
     }},
    {"update to a long text",
     [](KT_context *ctx, KT_vhash *map) {
         KT_vhash__update__string__sz(ctx, map, "k3", std::string(5000, 't').c_str());
     }},
    {"add a map",
     [](KT_context *ctx, KT_vhash *map) {
         KT_vhash *made = nullptr;
         KT_vhash__addnew__vhash(ctx, map, "new", &made);
         EXPECT_EQ(made == nullptr, KT_context__has_err(ctx) != 0);
     }},
    {"add a list",
     [](KT_context *ctx, KT_vhash *map) {
         KT_varray *made = nullptr;
         KT_vhash__addnew__varray(ctx, map, "new", &made);
         EXPECT_EQ(made == nullptr, KT_context__has_err(ctx) != 0);
     }},
    {"ensure a map",
     [](KT_context *ctx, KT_vhash *map) {
         KT_vhash *made = nullptr;
         KT_vhash__ensure__vhash(ctx, map, "new", &made);
         EXPECT_EQ(made == nullptr, KT_context__has_err(ctx) != 0);
     }},
    {"copy", [](KT_context *ctx, KT_vhash *map) { KT_vhash__addcopy__vhash(ctx, map, "new", map); }},
    {"remove", [](KT_context *ctx, KT_vhash *map) { KT_vhash__remove(ctx, map, "k0"); }},
    {"remove if present", [](KT_context *ctx, KT_vhash *map) { KT_vhash__remove_if_present(ctx, map, "k0", nullptr); }},
};

TEST_F(VhashTest, SurvivesFailingAllocations)
{
    for (const sweep_case &c : sweep_cases) {
        for (const int size : {1, 2, 4, 8, 9, 16, 33, 65, 128}) {
            SCOPED_TRACE(std::string(c.name) + ", map of " + std::to_string(size));
            bool is_done = false;
            for (kt_failing_alloc fault(kt_failing_alloc::mode::from_there_on); !is_done;) {
                fault.pause();
                KT_vhash *tree = nullptr, *map = nullptr;
                KT_vhash__alloc(ctx, &tree);
                KT_vhash__addnew__vhash(ctx, tree, "map", &map);
                for (int n = 0; n < size; n++)
                    KT_vhash__add__string__sz(ctx, map, ("k" + std::to_string(n)).c_str(), "some text");
                ASSERT_OK(ctx);
                const std::string before = json_of(ctx, tree);
                fault.next();
                c.act(ctx, map);
                fault.pause();
                is_done = !fault.fired();
                if (!is_done) {
                    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
                    reset();
                    EXPECT_EQ(json_of(ctx, tree), before);
                    c.act(ctx, map);
                }
                EXPECT_OK(ctx);
                EXPECT_NE(json_of(ctx, tree), before);
                KT_vhash__free(ctx, tree);
            }
        }
    }
}

// Leaves a tree so much memory of its own, in a chunk of ample size.
void leave_memory(const KT_vhash *map, size_t size)
{
    kt_pools *pools = &map->layout->arena->pools;
    pools->next_chunk_size = 8192;
    const kt_chunk *chunks = pools->chunks;
    while (pools->chunks == chunks)
        kt_pools_alloc(pools, kt_granule);
    pools->bump = pools->bump_end - size;
}

const struct {
    const char *name;
    bool is_shared;
    int others; // maps with the same keys and one more, so that the keys divide behind them
} step_layouts[] = {
    {"private", false, 0}, {"shared", true, 0}, {"shared and divided", true, 1}, {"shared and divided twice", true, 2}};

// A tree takes memory in chunks, so what it has left decides at which step of an operation there is none.
TEST_F(VhashTest, SurvivesFailingAtEveryStep)
{
    for (const sweep_case &c : sweep_cases) {
        for (const int size : {1, 2, 8, 9, 16}) {
            for (const auto &[layout, is_shared, others] : step_layouts) {
                SCOPED_TRACE(std::string(c.name) + ", map of " + std::to_string(size) + ", " + layout);
                for (size_t left = 0; left <= 2048; left += kt_granule) {
                    KT_vhash *tree = nullptr, *first = nullptr, *map = nullptr;
                    KT_vhash__alloc(ctx, &tree);
                    // The second map that begins with a key shares its layout.
                    KT_vhash__addnew__vhash(ctx, tree, "first", &first);
                    KT_vhash__add__null(ctx, first, is_shared ? "k0" : "other");
                    for (int n = 0; n <= others; n++) {
                        KT_vhash__addnew__vhash(ctx, tree, n < others ? std::to_string(n).c_str() : "map", &map);
                        for (int i = 0; i < size; i++)
                            KT_vhash__add__string__sz(ctx, map, ("k" + std::to_string(i)).c_str(), "some text");
                        if (n < others)
                            KT_vhash__add__null(ctx, map, ("beyond" + std::to_string(n)).c_str());
                    }
                    ASSERT_OK(ctx);
                    ASSERT_EQ(map->layout->is_private, !is_shared);
                    const std::string before = json_of(ctx, tree);
                    leave_memory(map, left);
                    {
                        kt_failing_alloc fault(kt_failing_alloc::mode::from_there_on);
                        fault.next();
                        c.act(ctx, map);
                        EXPECT_FAILED(ctx, fault.fired() ? KT_ERR_OUT_OF_MEMORY : 0);
                    }
                    if (KT_context__has_err(ctx)) {
                        reset();
                        EXPECT_EQ(json_of(ctx, tree), before);
                        c.act(ctx, map);
                    }
                    EXPECT_OK(ctx);
                    EXPECT_NE(json_of(ctx, tree), before);
                    KT_vhash__free(ctx, tree);
                }
            }
        }
    }
}

// The copy is made in one tree while another is read, with every amount of memory left and every further block failing.
TEST_F(VhashTest, CopySurvivesFailingAtEveryStep)
{
    KT_vhash *source = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &source, branching(40).c_str());
    for (size_t left = 0; left <= 8000; left += 5 * kt_granule) {
        SCOPED_TRACE(left);
        bool is_done = false;
        for (kt_failing_alloc fault; !is_done;) {
            fault.pause();
            KT_vhash *tree = nullptr;
            KT_vhash__alloc(ctx, &tree);
            leave_memory(tree, left);
            fault.next();
            KT_vhash__addcopy__vhash(ctx, tree, "copy", source);
            is_done = !fault.fired();
            fault.pause();
            EXPECT_FAILED(ctx, is_done ? 0 : KT_ERR_OUT_OF_MEMORY);
            reset();
            EXPECT_EQ(json_of(ctx, tree), is_done ? "{\"copy\":" + branching(40) + "}" : "{}");
            KT_vhash__free(ctx, tree);
        }
    }
    KT_vhash__free(ctx, source);
}

// Once a pair was removed in the middle, the order is kept apart from the pairs, and both have to grow.
TEST_F(VhashTest, AddingBehindARemovalSurvivesFailingAtEveryStep)
{
    for (size_t left = 0; left <= 2048; left += kt_granule) {
        SCOPED_TRACE(left);
        KT_vhash *tree = nullptr, *map = nullptr;
        KT_vhash__alloc(ctx, &tree);
        KT_vhash__addnew__vhash(ctx, tree, "map", &map);
        for (int n = 0; n < 8; n++)
            KT_vhash__add__int64(ctx, map, ("k" + std::to_string(n)).c_str(), n);
        KT_vhash__remove(ctx, map, "k0");
        KT_vhash__add__int64(ctx, map, "k0", 8);
        ASSERT_OK(ctx);
        const std::string before = R"({"map":{"k1":1,"k2":2,"k3":3,"k4":4,"k5":5,"k6":6,"k7":7,"k0":8)";
        leave_memory(map, left);
        {
            kt_failing_alloc fault(kt_failing_alloc::mode::from_there_on);
            fault.next();
            KT_vhash__add__int64(ctx, map, "new", 9);
            EXPECT_FAILED(ctx, fault.fired() ? KT_ERR_OUT_OF_MEMORY : 0);
        }
        if (KT_context__has_err(ctx)) {
            reset();
            EXPECT_EQ(json_of(ctx, tree), before + "}}");
            KT_vhash__add__int64(ctx, map, "new", 9);
        }
        EXPECT_OK(ctx);
        EXPECT_EQ(json_of(ctx, tree), before + R"(,"new":9}})");
        KT_vhash__free(ctx, tree);
    }
}

TEST_F(VhashTest, EnsuresNothingWhileThereIsAnErrorNotEvenWhatIsThere)
{
    KT_varray *list = nullptr;
    KT_vhash *added = nullptr;
    KT_vhash__addnew__varray(ctx, root, "list", &list);
    KT_vhash__addnew__vhash(ctx, root, "map", &added);
    KT_vhash__get__int64(ctx, root, "absent", nullptr);
    KT_vhash *map = nullptr;
    list = nullptr;
    KT_vhash__ensure__vhash(ctx, root, "map", &map);
    KT_vhash__ensure__varray(ctx, root, "list", &list);
    EXPECT_EQ(map, nullptr);
    EXPECT_EQ(list, nullptr);
    EXPECT_FAILED(ctx, KT_ERR_KEY_NOT_FOUND);
    reset();
}

TEST_F(VhashTest, OnlyTheOutermostMapStandsByItself)
{
    KT_vhash *inner = child("inner");
    KT_varray *list = nullptr;
    KT_vhash *in_list = nullptr;
    KT_varray__alloc(ctx, &list);
    KT_varray__appendnew__vhash(ctx, list, &in_list);
    KT_bool is_root = 77;
    KT_vhash__is_root(ctx, root, &is_root);
    EXPECT_EQ(is_root, 1);
    for (KT_vhash *borrowed : {inner, in_list}) {
        KT_vhash__is_root(ctx, borrowed, &is_root);
        EXPECT_EQ(is_root, 0);
        KT_vhash__free(ctx, borrowed);
        EXPECT_ERROR(ctx, KT_ERR_BORROWED, "the map belongs to another map or list and is freed with it");
        reset();
    }
    EXPECT_EQ(json(), R"({"inner":{}})");
    KT_varray__free(ctx, list);
}

TEST_F(VhashTest, AnInnerListIsNotFreedAlone)
{
    KT_varray *list = nullptr;
    KT_vhash__addnew__varray(ctx, root, "list", &list);
    KT_varray__free(ctx, list);
    EXPECT_ERROR(ctx, KT_ERR_BORROWED, "the list belongs to a map and is freed with it");
    reset();
    EXPECT_EQ(json(), R"({"list":[]})");
}

TEST_F(VhashTest, ACopyStandsByItself)
{
    static constexpr const char *documents[] = {
        "{}",
        R"({"a":1,"b":{"c":[null,true,"a text that is too long for a value",{}]},"d":-1.5})",
        R"({"1":1,"2":2,"3":3,"4":4,"5":5,"6":6,"7":7,"8":8,"9":9,"a key that is longer than fourteen bytes":10})",
    };
    for (const char *document : documents) {
        SCOPED_TRACE(document);
        const std::string text = std::string(R"({"inner":)") + document + "}";
        KT_vhash *outer = nullptr;
        KT_vhash *inner = nullptr;
        KT_vhash *copies[2] = {};
        KT_vhash__alloc__from_json__sz(ctx, &outer, text.c_str());
        KT_vhash__get__vhash(ctx, outer, "inner", &inner);
        KT_vhash__alloc__copy(ctx, &copies[0], inner);
        KT_vhash__alloc__copy(ctx, &copies[1], outer);
        KT_vhash__free(ctx, outer);
        EXPECT_EQ(json_of(ctx, copies[0]), document);
        EXPECT_EQ(json_of(ctx, copies[1]), text);
        for (KT_vhash *copy : copies) {
            KT_vhash__add__int64(ctx, copy, "new", 11);
            KT_vhash__remove(ctx, copy, "new");
            EXPECT_OK(ctx);
        }
        EXPECT_EQ(json_of(ctx, copies[0]), document);
        KT_vhash__free(ctx, copies[0]);
        KT_vhash__free(ctx, copies[1]);
    }
}

TEST_F(VhashTest, AllocSurvivesFailingAllocations)
{
    for (kt_failing_alloc fault; fault.next(); reset()) {
        KT_vhash *map = nullptr;
        KT_vhash__alloc(ctx, &map);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            KT_vhash__free(ctx, map);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(map, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
}

} // namespace

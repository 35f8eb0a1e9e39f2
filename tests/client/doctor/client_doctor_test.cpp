// The examination of a database, by the C interface. What it says is tested through the command.
#include "allocations_to_failure.hpp"
#include "failing_alloc.hpp"
#include "load_test.hpp"
#include "tov_doctor.h"

namespace {

class ClientDoctor : public LoadTest {
  protected:
    void create()
    {
        tov_client_create_options options = {};
        tov_client__create_database__with(ctx, schema, path("db").c_str(), &options);
        ASSERT_OK(ctx);
    }
    // "code severity" of each diagnosis, a blank between them.
    std::string examine()
    {
        KT_varray *list = nullptr;
        uint32_t count = 0;
        std::string text;
        tov_client__examine_database(ctx, path("db").c_str(), &list);
        EXPECT_OK(ctx);
        KT_varray__count(ctx, list, &count);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *map = nullptr;
            const char *code = "";
            const char *severity = "";
            KT_varray__get__vhash(ctx, list, n, &map);
            KT_vhash__get__sz(ctx, map, "code", &code);
            KT_vhash__get__sz(ctx, map, "severity", &severity);
            text += std::string(n ? " " : "") + code + " " + severity;
        }
        KT_varray__free(ctx, list);
        return text;
    }
};

// The document says what the server says of all tables, so impossible dates are refused whatever SQLite thinks of them.
TEST_F(ClientDoctor, SaysWhatItLookedAt)
{
    create();
    EXPECT_EQ(examine(), "sqlite-version ok setting-foreign-keys note setting-recursive-triggers note integrity ok "
                         "object-missing ok impossible-dates ok reference-broken ok reference-without-index ok");
}

TEST_F(ClientDoctor, KnowsTheTablesThatLoadingMakes)
{
    create();
    tov_client_loader *loader = nullptr;
    write("Customers.csv", "Id,Name,Code,Born\n1,Ann,abc,2000-01-01\n");
    tov_client__open_loader(ctx, schema, path("db").c_str(), nullptr, &loader);
    tov_client__load_file(ctx, loader, path("Customers.csv").c_str());
    tov_client__free_loader(ctx, loader);
    ASSERT_OK(ctx);
    EXPECT_EQ(examine().find("object-added"), std::string::npos);
}

TEST_F(ClientDoctor, EachKindIsOnItsPage)
{
    std::ifstream page(TOV_DOCTOR_PAGE);
    const std::string text((std::istreambuf_iterator<char>(page)), {});
    for (uint32_t n = 0; const tov_client_diagnosis_kind *kind = tov_client__get_nth_diagnosis_kind(n); n++)
        EXPECT_NE(text.find(std::string("\n| `") + kind->code + "` | " + kind->severity + " | "), std::string::npos)
            << kind->code;
    EXPECT_NE(tov_client__get_nth_diagnosis_kind(0), nullptr);
}

TEST_F(ClientDoctor, AFileThatIsNotADatabaseIsRefused)
{
    KT_varray *list = nullptr;
    write("db", "this is not a database, however long it may become when one goes on writing");
    tov_client__examine_database(ctx, path("db").c_str(), &list);
    EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_SQLITE(SQLITE_NOTADB));
    EXPECT_EQ(list, nullptr);
    KT_context__err_reset(ctx);
}

TEST_F(ClientDoctor, SurvivesFailingAllocations)
{
    create();
    const std::string file = path("db");
    size_t turn = 1;
    const auto try_once = [&] {
        KT_varray *list = nullptr;
        tov_client__examine_database(ctx, file.c_str(), &list);
        const bool failed = KT_context__has_err(ctx);
        if (failed) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_EQ(list, nullptr);
        }
        KT_context__err_reset(ctx);
        KT_varray__free(ctx, list);
        return failed;
    };
    for (kt_failing_alloc fault; fault.next() && try_once();)
        EXPECT_TRUE(fault.fired());
    for (bool failed = true; failed; turn++) {
        allocations_to_failure = turn; // the standard library's
        failed = try_once();
    }
    allocations_to_failure = 0;
    EXPECT_GT(turn, 100u);
}

} // namespace

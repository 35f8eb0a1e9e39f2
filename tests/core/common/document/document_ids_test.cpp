#include "document/document_ids.hpp"

#include "failing_alloc.hpp"
#include "kt_test.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <filesystem>

class DocumentIdsTest : public ContextTest {
  protected:
    std::string lower(const std::string &id)
    {
        tov_id_room room{ctx};
        const char *lowered = nullptr;
        tov_lower_id(ctx, id.c_str(), &room, &lowered);
        EXPECT_OK(ctx);
        return lowered ? lowered : "(null)";
    }
};

TEST_F(DocumentIdsTest, LowersUpperCaseAndNothingElse)
{
    struct id_case {
        const char *name;
        const char *id;
        const char *lowered;
    };
    static constexpr id_case cases[] = {
        {"an empty id stays empty", "", ""},
        {"lower case stays", "orders", "orders"},
        {"upper case is lowered", "ORDERS", "orders"},
        {"both ends of the alphabet are lowered", "AZaz", "azaz"},
        {"the neighbours of the alphabet stay", "@[`{", "@[`{"},
        {"only some letters are in upper case", "OrderItems", "orderitems"},
        {"the last letter alone is in upper case", "orderX", "orderx"},
        {"digits and signs stay", "Tbl_1 (2)", "tbl_1 (2)"},
        {"bytes beyond ASCII stay", "\xC3\x84Rger", "\xC3\x84rger"},
    };
    for (const id_case &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(lower(c.id), c.lowered);
        EXPECT_EQ(tov_is_lower_id(c.id), std::string(c.id) == c.lowered);
    }
}

namespace {

// A locale in which every byte is a character, made for the test: Debian comes with locales of UTF-8 only.
class single_byte_locale {
  public:
    single_byte_locale()
    {
        const std::string folder = ::testing::TempDir() + "tov_locales." + std::to_string(getpid());
        const std::string name = folder + "/latin1";
        made_ = mkdir(folder.c_str(), 0700) == 0 &&
                system(("localedef -i en_US -f ISO-8859-1 " + name).c_str()) == 0 && // NOLINT(cert-env33-c): fixed text
                setenv("LOCPATH", folder.c_str(), 1) == 0 && setlocale(LC_ALL, "latin1");
        std::filesystem::remove_all(folder);
    }
    ~single_byte_locale()
    {
        setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
    }
    single_byte_locale(const single_byte_locale &) = delete;
    single_byte_locale &operator=(const single_byte_locale &) = delete;
    bool is_made() const
    {
        return made_;
    }

  private:
    bool made_ = false;
};

} // namespace

TEST_F(DocumentIdsTest, LeavesTheBytesOfUtf8AloneInALocaleOfSingleBytes)
{
    const single_byte_locale locale;
    ASSERT_TRUE(locale.is_made());
    ASSERT_TRUE(isupper(0xC3)) << "the first byte of a two-byte character is a capital here";
    EXPECT_EQ(lower("Stra\xC3\x9F"
                    "E \xC3\x84"),
              "stra\xC3\x9F"
              "e \xC3\x84");
    EXPECT_TRUE(tov_is_lower_id("\xC3\x84"));
}

TEST_F(DocumentIdsTest, LowersIdsOfAnyLength)
{
    for (size_t length : {1u, 126u, 127u, 128u, 129u, 5000u}) {
        SCOPED_TRACE(length);
        EXPECT_EQ(lower(std::string(length, 'X')), std::string(length, 'x'));
        EXPECT_EQ(lower(std::string(length, 'a') + "B"), std::string(length, 'a') + "b");
    }
}

TEST_F(DocumentIdsTest, UsesALowerCaseIdAsItStands)
{
    const std::string id(1000, 'a');
    tov_id_room room{ctx};
    const char *lowered = nullptr;
    tov_lower_id(ctx, id.c_str(), &room, &lowered);
    EXPECT_EQ(lowered, id.c_str());
}

TEST_F(DocumentIdsTest, TakesNoMemoryForIdsOfOrdinaryLength)
{
    kt_failing_alloc fault;
    fault.next();
    EXPECT_EQ(lower(std::string(127, 'X')), std::string(127, 'x'));
    EXPECT_FALSE(fault.fired());
}

TEST_F(DocumentIdsTest, SurvivesShortMemory)
{
    const std::string id(128, 'X');
    kt_failing_alloc fault;
    fault.next();
    tov_id_room room{ctx};
    const char *lowered = nullptr;
    tov_lower_id(ctx, id.c_str(), &room, &lowered);
    EXPECT_TRUE(fault.fired());
    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
    EXPECT_EQ(lowered, nullptr);
    reset();
}

TEST_F(DocumentIdsTest, FreesALongCopy)
{
    kt_failing_alloc fault;
    lower(std::string(128, 'X'));
    EXPECT_EQ(fault.leaked(), 0u);
}

// Packages as files: what is refused, and what is only said.
#include "host_model_test.hpp"

static const std::string table = a_model_table("[dbo].[T]", a_model_col("[dbo].[T].[A]", "[int]"));

// The same bytes with each of one text made another of the same length.
static std::string with(std::string bytes, const std::string &old_text, const std::string &new_text)
{
    for (size_t at = bytes.find(old_text); at != bytes.npos; at = bytes.find(old_text, at + 1))
        bytes.replace(at, old_text.size(), new_text);
    return bytes;
}

static std::string stored(const std::string &model)
{
    return a_zip({{"model.xml", model}}, false);
}

TEST_F(HostPackageTest, BadFiles)
{
    const std::string package = a_package(table);
    const std::string directory = "PK\x01\x02";
    std::string encrypted = stored(a_model(table));
    encrypted[6] |= 1;
    encrypted[encrypted.find(directory) + 8] |= 1;
    std::string packed_oddly = stored(a_model(table));
    packed_oddly[8] = 9; // deflate64
    packed_oddly[packed_oddly.find(directory) + 10] = 9;
    const struct {
        const char *name;
        std::string bytes;
        const char *message;
    } cases[] = {
        {"not a ZIP archive", "hello", "the package cannot be opened: Not a zip archive"},
        {"cut off", package.substr(0, package.size() / 2),
         "the package is cut off: its directory, which ends the file, is missing"},
        {"cut off in its directory", package.substr(0, package.size() - 5),
         "the package is cut off: its directory, which ends the file, is missing"},
        {"no package", a_zip({{"readme.txt", "hello"}}),
         "the file is a ZIP archive but not a package: it has no model.xml"},
        {"an empty archive", std::string("PK\x05\x06", 4) + std::string(18, '\0'),
         "the file is a ZIP archive but not a package: it has no model.xml"},
        {"the form of 2009", a_zip({{"LogicalObjectStream.xml", "<x/>"}}),
         "the package has the form of 2009, which has no model.xml and is not read: extract it again with a tool of "
         "today"},
        {"a model that was changed inside the archive", with(stored(a_model(table)), "[T]", "[U]"),
         "model.xml in the package is damaged: CRC error"},
        {"a way of packing that is not known", packed_oddly,
         "model.xml in the package cannot be unpacked: Compression method not supported"},
        {"an encrypted model", encrypted, "model.xml in the package is encrypted"},
        {"two entries of one name", with(a_zip({{"model.xml", "x"}, {"nodel.xml", "y"}}), "nodel", "Model"),
         "the package has two entries named Model.xml"},
        {"a name that leads out", a_zip({{"a/../../etc", "x"}}),
         "the package has an entry named 'a/../../etc', which is not a path in a package"},
        {"a name that begins at the root", a_zip({{"/model.xml", "x"}}),
         "the package has an entry named '/model.xml', which is not a path in a package"},
        {"a name of another system", a_zip({{"C:\\model.xml", "x"}}),
         "the package has an entry named 'C:\\model.xml', which is not a path in a package"},
        {"a name with a line end", a_zip({{"a\nb", "x"}}),
         "the package has an entry named 'a\nb', which is not a path in a package"},
        {"too much air", a_zip({{"model.xml", std::string(20 << 20, ' ')}}),
         "model.xml is more than 250 times as large as its packed form, which no model is: it was made to fill memory"},
        {"XML that ends early", a_package_of("<DataSchemaModel><Model>"), "model.xml:1:25: no element found"},
        {"XML that is not well-formed", a_package_of("<DataSchemaModel>\n <Model></DataSchemaModel>"),
         "model.xml:2:11: mismatched tag"},
        {"no XML", a_package_of("hello"), "model.xml:1:1: syntax error"},
        {"an empty model", a_package_of(""), "model.xml:1:1: no element found"},
        {"another root", a_package_of("<DacOrigin/>"),
         "model.xml:1:13: expected DataSchemaModel, the model of a database, where 'DacOrigin' is"},
        {"entities", a_package_of("<!DOCTYPE d [<!ENTITY a \"aa\">]><DataSchemaModel/>"),
         "model.xml:1:13: a DOCTYPE, which no package has, is not read"},
        {"an entity that nothing declares", a_package_of("<DataSchemaModel a='&b;'/>"),
         "model.xml:1:1: undefined entity"},
        {"an encoding that is not known", a_package_of("<?xml version='1.0' encoding='x'?><DataSchemaModel/>"),
         "model.xml:1:31: unknown encoding"},
        {"a bad Origin.xml", a_zip({{"model.xml", a_model(table)}, {"Origin.xml", "<x>"}}),
         "Origin.xml:1:4: no element found"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        read(c.bytes);
        EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, c.message);
        reset();
    }
}

TEST_F(HostPackageTest, Limits)
{
    const std::string package = a_package(table);
    const std::string size = std::to_string(a_model(table).size());
    host_package_limits few_entries, small_files, tight, shallow;
    few_entries.entries = 1;
    small_files.xml_bytes = a_model(table).size() - 1;
    tight.free_bytes = 0;
    tight.xml_ratio = 1;
    shallow.xml_depth = 9;
    const struct {
        const char *name;
        const host_package_limits &limits;
        std::string message;
    } cases[] = {
        {"entries", few_entries, "the package has 2 entries; no more than 1 are read"},
        {"bytes", small_files,
         "model.xml has " + size + " bytes; no more than " + std::to_string(small_files.xml_bytes) + " are read"},
        {"nesting", shallow, "elements are nested too deeply"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        read(package, c.limits);
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        EXPECT_TRUE(std::string_view(KT_context__err_description(ctx)).ends_with(c.message))
            << KT_context__err_description(ctx);
        reset();
    }
    read(a_package(table + std::string(1 << 20, ' ')));
    EXPECT_OK(ctx);
}

// An archive whose entries share their bytes unpacks to far more than any one of them could.
TEST_F(HostPackageTest, EntriesPackedIntoOneAnother)
{
    std::string bytes = a_zip({{"model.xml", a_model(table)}, {"b", std::string(5000, 'b')}}, false);
    const size_t second = bytes.find("PK\x01\x02", bytes.find("PK\x01\x02") + 1);
    bytes[second + 22] = 0x7F; // the third byte of both sizes: 8 MB
    bytes[second + 26] = 0x7F;
    read(bytes);
    EXPECT_ERROR(
        ctx, KT_ERR_UNEXPECTED_VALUE,
        "the package's entries are larger than the package: it is cut off, or they are packed into one another");
    reset();
}

TEST_F(HostPackageTest, ASizeThatIsNotTrue)
{
    for (const int change : {-1, 1}) {
        std::string bytes = a_zip({{"model.xml", a_model(table + " ")}});
        char &size = bytes[bytes.find("PK\x01\x02") + 24];
        size = static_cast<char>(size + change);
        read(bytes);
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        EXPECT_TRUE(std::string_view(KT_context__err_description(ctx)).starts_with("model.xml in the package is "))
            << KT_context__err_description(ctx);
        reset();
    }
}

TEST_F(HostPackageTest, Checksum)
{
    const std::string model = a_model(table);
    read(a_zip({{"model.xml", model}, {"Origin.xml", an_origin(model + ' ', true)}}));
    EXPECT_OK(ctx);
    EXPECT_EQ(described(), "1 dbo.T\n  1 A int int 4 10 0 null\n");
    EXPECT_EQ(lines(), "model-checksum: model.xml is not what it was when the package was made: it was edited or "
                       "damaged: " +
                           sha256_of(model));
    read(a_zip({{"model.xml", model}}));
    EXPECT_OK(ctx);
    EXPECT_EQ(lines(), "model-checksum: the package has no checksum of its model: whether it was changed since it was "
                       "made cannot be told");
}

TEST_F(HostPackageTest, FormsOfTheFile)
{
    const std::string utf16le = "<?xml version=\"1.0\"?>" + a_model(table).substr(a_model(table).find("<Data"));
    std::string wide = "\xFF\xFE";
    for (const char byte : utf16le)
        wide += {byte, '\0'};
    const struct {
        const char *name;
        std::string bytes;
    } cases[] = {
        {"packed", a_package(table)},
        {"stored", stored(a_model(table))},
        {"with a byte-order mark", a_package_of("\xEF\xBB\xBF" + a_model(table))},
        {"in UTF-16", a_package_of(wide)},
        {"named in capitals", a_zip({{"MODEL.XML", a_model(table)}})},
        {"with rows and scripts",
         a_package_of(a_model(table), true, {{"Data/dbo.T/TableData-000-00000.BCP", "x"}, {"predeploy.sql", "x"}})},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        read(c.bytes);
        EXPECT_OK(ctx);
        EXPECT_EQ(described(), "1 dbo.T\n  1 A int int 4 10 0 null\n");
        reset();
    }
}

TEST(HostIsPackageTest, ByTheFirstBytes)
{
    EXPECT_TRUE(host_is_package(a_package(table)));
    EXPECT_TRUE(host_is_package(std::string_view("PK\x05\x06", 4)));
    EXPECT_FALSE(host_is_package("{\"tables\":[]}"));
    EXPECT_FALSE(host_is_package("PK"));
    EXPECT_FALSE(host_is_package(""));
}

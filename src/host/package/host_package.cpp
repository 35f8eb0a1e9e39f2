// A package is a ZIP archive with a model of the database, model.xml, and a few files about it. Packages with rows
// have them in row parts beside it; both kinds are read alike.
#include "package/host_package.hpp"

#include "package/host_model.hpp"
#include "package/host_origin.hpp"
#include "records/host_declared_type.hpp"

#include <algorithm>
#include <openssl/evp.h>

#define KT_HERE "src/host/package/host_package"

// SHA-256 comes from libcrypto, which libzip brings along.
class host_checksum {
  public:
    host_checksum() : digest_(EVP_MD_CTX_new())
    {
        if (!digest_ || EVP_DigestInit_ex(digest_.get(), EVP_sha256(), nullptr) != 1)
            throw std::bad_alloc();
    }
    void add(std::string_view piece)
    {
        EVP_DigestUpdate(digest_.get(), piece.data(), piece.size());
    }
    std::string hexadecimal()
    {
        unsigned char bytes[EVP_MAX_MD_SIZE];
        unsigned size = 0;
        EVP_DigestFinal_ex(digest_.get(), bytes, &size);
        std::string text;
        for (unsigned n = 0; n < size; n++) {
            text += "0123456789ABCDEF"[bytes[n] >> 4];
            text += "0123456789ABCDEF"[bytes[n] & 15];
        }
        return text;
    }

  private:
    struct free_digest {
        void operator()(EVP_MD_CTX *digest) const
        {
            EVP_MD_CTX_free(digest);
        }
    };
    std::unique_ptr<EVP_MD_CTX, free_digest> digest_;
};

static void my_compare_checksum(KT_context *ctx, host_findings &findings, std::string_view said, std::string found)
{
    std::string upper(said);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char byte) { return byte >= 'a' && byte <= 'f' ? static_cast<char>(byte - 0x20) : byte; });
    if (upper == found)
        return;
    const char *reason = said.empty() ? "the package has no checksum of its model: whether it was changed since it "
                                        "was made cannot be told"
                                      : "model.xml is not what it was when the package was made: it was edited or "
                                        "damaged";
    KT_TRY(findings.add(ctx, "model-checksum", nullptr, nullptr, said.empty() ? nullptr : found.c_str(), reason));
}

static void my_read_model(KT_context *ctx, host_zip &package, const host_package_limits &limits, host_model &model,
                          std::string &checksum)
{
    const host_zip_entry *entry = nullptr;
    KT_TRY(host_find_model(ctx, package, limits, &entry));
    host_checksum sum;
    host_model_reader elements{model};
    host_tree_builder builder{elements};
    host_xml xml{entry->name, limits, builder};
    KT_TRY(package.read(ctx, *entry, [&](KT_context *inner, std::string_view piece) {
        sum.add(piece);
        xml.parse(inner, piece);
    }));
    KT_TRY(xml.finish(ctx));
    checksum = sum.hexadecimal();
    KT_TRY(host_join_model(ctx, model));
}

void host_read_package(KT_context *ctx, std::string_view bytes, host_findings &findings, host_catalogue &catalogue,
                       const host_package_limits &limits)
{
    host_zip package;
    host_origin origin;
    std::string checksum;
    KT_TRY(package.open(ctx, bytes, limits));
    KT_TRY(host_read_origin(ctx, package, limits, origin));
    host_model model{catalogue, findings, origin.is_from_server};
    KT_TRY(my_read_model(ctx, package, limits, model, checksum));
    KT_TRY(my_compare_checksum(ctx, findings, origin.model_checksum, checksum));
    if (!origin.database.empty())
        catalogue.name = catalogue.texts.keep(origin.database);
    catalogue.code_page = host_code_page(catalogue.collation);
}

// The files of a package, unpacked piece by piece.
#pragma once

#include "package/host_package.hpp"

#include <functional>
#include <memory>
#include <vector>

struct zip;

struct host_zip_entry {
    const char *name = nullptr; // borrowed from the archive
    uint64_t index = 0;
    uint64_t size = 0; // bytes, as the package's directory says; no more are unpacked
    uint64_t packed_size = 0;
};

// Takes the next piece of a file; may fail.
using host_take = std::function<void(KT_context *ctx, std::string_view piece)>;

class host_zip {
  public:
    host_zip() = default;
    host_zip(const host_zip &) = delete;
    host_zip &operator=(const host_zip &) = delete;
    ~host_zip();

    // The bytes must outlive the archive. Refuses what no package has: two entries of one name, names that lead out
    // of the package, files packed into one another.
    void open(KT_context *ctx, std::string_view bytes, const host_package_limits &limits);
    const std::vector<host_zip_entry> &entries() const
    {
        return entries_;
    }
    // Null when there is none; the case of ASCII letters does not count.
    const host_zip_entry *find(std::string_view name) const;
    void read(KT_context *ctx, const host_zip_entry &entry, const host_take &take);

  private:
    void add_entry(KT_context *ctx, uint64_t index);
    void check_names(KT_context *ctx) const;

    zip *archive_ = nullptr;
    std::vector<host_zip_entry> entries_;
    std::unique_ptr<char[]> piece_;
};

// Refuses an XML file that is larger, or was packed more tightly, than any honest one.
void host_check_xml_entry(KT_context *ctx, const host_zip_entry &entry, const host_package_limits &limits);
// Finds model.xml, and says what the archive is when it has none.
void host_find_model(KT_context *ctx, const host_zip &package, const host_package_limits &limits,
                     const host_zip_entry **entry);

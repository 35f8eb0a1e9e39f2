// A disk that loses power: a VFS that notes what SQLite writes and what it has synchronised, and shows what may be left
// on the disk after each step. Of what was written since the last synchronisation any sectors may be there and any may
// be missing, in any order; a removed file may be there again.
//
//     lossy_disk disk;                          // SQLite's default VFS from here to its destruction
//     the_operation(ctx);
//     for (size_t n = 0; n <= disk.steps(); n++)
//         disk.lose_power(n, random, folder);   // writes the files that are left, by their names, into a folder
#pragma once

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

class lossy_disk {
  public:
    // A disk that lies says that it has synchronised, and has not.
    explicit lossy_disk(bool lies = false)
    {
        state = {};
        state.lies = lies;
        state.base = sqlite3_vfs_find(nullptr);
        vfs_ = *state.base;
        vfs_.zName = "lossy";
        vfs_.pNext = nullptr;
        vfs_.szOsFile = static_cast<int>(sizeof(file)) + state.base->szOsFile;
        vfs_.xOpen = open;
        vfs_.xDelete = remove;
        sqlite3_vfs_register(&vfs_, 1);
    }
    ~lossy_disk()
    {
        sqlite3_vfs_unregister(&vfs_);
        sqlite3_vfs_register(state.base, 1);
    }
    lossy_disk(const lossy_disk &) = delete;
    lossy_disk &operator=(const lossy_disk &) = delete;

    size_t steps() const
    {
        return state.steps.size();
    }
    // What was there before the first step.
    void add_file(const std::string &name, const std::string &content)
    {
        state.before[name] = content;
    }
    template <class Random> void lose_power(size_t after, Random &random, const std::filesystem::path &folder) const
    {
        std::map<std::string, on_disk> files;
        for (const auto &[name, content] : state.before)
            files[name] = {content, {}, true, true};
        for (size_t n = 0; n < after; n++)
            take(files[state.steps[n].name], state.steps[n]);
        for (auto &[name, left] : files) {
            const bool may_be_there = left.exists || left.existed_for_sure;
            const bool must_be_there = left.exists && left.existed_for_sure;
            if (must_be_there || (may_be_there && random() % 2))
                std::ofstream(folder / name, std::ios::binary) << some_of(left, random);
        }
    }

  private:
    enum class kind { write, truncate, sync, remove };
    struct step {
        std::string name; // the file's, without its folder
        kind what;
        size_t offset;
        std::string bytes;
    };
    struct on_disk {
        std::string sure;                 // what has been synchronised
        std::vector<const step *> unsure; // what has been done since
        bool exists = true;
        bool existed_for_sure = false; // at the last synchronisation
    };
    struct file {
        sqlite3_file head;
        char name[64];
        sqlite3_file *real()
        {
            return reinterpret_cast<sqlite3_file *>(this + 1);
        }
    };
    static inline struct {
        sqlite3_vfs *base;
        bool lies;
        std::map<std::string, std::string> before;
        std::vector<step> steps;
        sqlite3_io_methods methods;
    } state;
    static constexpr size_t sector = 512;

    static void apply(std::string &content, const step &s)
    {
        if (s.what == kind::truncate) {
            content.resize(s.offset);
            return;
        }
        if (content.size() < s.offset + s.bytes.size())
            content.resize(s.offset + s.bytes.size());
        std::copy(s.bytes.begin(), s.bytes.end(), content.begin() + static_cast<std::ptrdiff_t>(s.offset));
    }
    static void take(on_disk &left, const step &s)
    {
        if (s.what == kind::remove) {
            left.exists = false;
            return;
        }
        left.exists = true;
        if (s.what != kind::sync) {
            left.unsure.push_back(&s);
            return;
        }
        for (const step *done : left.unsure)
            apply(left.sure, *done);
        left.unsure.clear();
        left.existed_for_sure = true;
    }
    template <class Random> static std::string some_of(const on_disk &left, Random &random)
    {
        std::vector<step> pieces;
        for (const step *s : left.unsure) {
            if (s->what == kind::truncate && random() % 2)
                pieces.push_back(*s);
            for (size_t at = 0; at < s->bytes.size(); at += sector) {
                if (random() % 2)
                    pieces.push_back({s->name, s->what, s->offset + at, s->bytes.substr(at, sector)});
            }
        }
        if (random() % 2)
            std::shuffle(pieces.begin(), pieces.end(), random);
        std::string content = left.sure;
        for (const step &piece : pieces)
            apply(content, piece);
        return content;
    }

    static void note(sqlite3_file *f, kind what, sqlite3_int64 offset = 0, const void *bytes = "", int count = 0)
    {
        const char *name = reinterpret_cast<file *>(f)->name;
        if (name[0] && !(what == kind::sync && state.lies))
            state.steps.push_back({name, what, static_cast<size_t>(offset),
                                   std::string(static_cast<const char *>(bytes), static_cast<size_t>(count))});
    }
    static sqlite3_file *real(sqlite3_file *f)
    {
        return reinterpret_cast<file *>(f)->real();
    }
    static std::string name_of(const char *path)
    {
        return path ? std::filesystem::path(path).filename().string() : "";
    }

    static int open(sqlite3_vfs *, const char *path, sqlite3_file *f, int flags, int *out_flags)
    {
        auto *opened = reinterpret_cast<file *>(f);
        name_of(path).copy(opened->name, sizeof opened->name - 1);
        opened->name[std::min(name_of(path).size(), sizeof opened->name - 1)] = '\0';
        const int code = state.base->xOpen(state.base, path, opened->real(), flags, out_flags);
        set_methods();
        f->pMethods = opened->real()->pMethods ? &state.methods : nullptr;
        return code;
    }
    static int remove(sqlite3_vfs *, const char *path, int sync_folder)
    {
        state.steps.push_back({name_of(path), kind::remove, 0, ""});
        return state.base->xDelete(state.base, path, sync_folder);
    }
    static void set_methods()
    {
        sqlite3_io_methods &m = state.methods;
        m.iVersion = 1;
        m.xClose = [](sqlite3_file *f) { return real(f)->pMethods->xClose(real(f)); };
        m.xRead = [](sqlite3_file *f, void *bytes, int count, sqlite3_int64 offset) {
            return real(f)->pMethods->xRead(real(f), bytes, count, offset);
        };
        m.xWrite = [](sqlite3_file *f, const void *bytes, int count, sqlite3_int64 offset) {
            note(f, kind::write, offset, bytes, count);
            return real(f)->pMethods->xWrite(real(f), bytes, count, offset);
        };
        m.xTruncate = [](sqlite3_file *f, sqlite3_int64 size) {
            note(f, kind::truncate, size);
            return real(f)->pMethods->xTruncate(real(f), size);
        };
        m.xSync = [](sqlite3_file *f, int flags) {
            note(f, kind::sync);
            return real(f)->pMethods->xSync(real(f), flags);
        };
        m.xFileSize = [](sqlite3_file *f, sqlite3_int64 *size) { return real(f)->pMethods->xFileSize(real(f), size); };
        m.xLock = [](sqlite3_file *f, int lock) { return real(f)->pMethods->xLock(real(f), lock); };
        m.xUnlock = [](sqlite3_file *f, int lock) { return real(f)->pMethods->xUnlock(real(f), lock); };
        m.xCheckReservedLock = [](sqlite3_file *f, int *result) {
            return real(f)->pMethods->xCheckReservedLock(real(f), result);
        };
        m.xFileControl = [](sqlite3_file *f, int what, void *data) {
            return real(f)->pMethods->xFileControl(real(f), what, data);
        };
        m.xSectorSize = [](sqlite3_file *f) { return real(f)->pMethods->xSectorSize(real(f)); };
        m.xDeviceCharacteristics = [](sqlite3_file *f) { return real(f)->pMethods->xDeviceCharacteristics(real(f)); };
    }

    sqlite3_vfs vfs_;
};

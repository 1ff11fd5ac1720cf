#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <string>

#include "foundation/platform/posixsupport_posix.h"
#include "foundation/platform/registry.h"
#include "foundation/utf.h"

// The registry as one SQLite database per user.
//
// keys(id, hive, path): one row per key, the path without leading or
// trailing backslashes ("" is the hive's top), compared ignoring ASCII
// case. vals(key, name, type, data): the values of a key.
// One connection serves the process, under a mutex; its statements are
// prepared once. Reads of an existing key never write. The database runs
// in write-ahead-log mode with a busy timeout, so writers of other
// processes wait for each other instead of failing, and readers never wait.
//
// Nothing waits longer than the busy timeout: a database that another
// program holds locked fails every call after that wait, with one line
// that says so. A damaged database (SQLite's "corrupt" or "not a
// database") is moved aside whole, never written over: the line names where
// it went, this process goes on with the defaults, and the next one starts
// a fresh store.

namespace {

constexpr int kBusyTimeoutMs = 10000;

// The wait for a locked store; QUILLOTONE_SETTINGS_WAIT_MS shortens it for
// tests.
int BusyTimeoutMs() {
    const char* text = std::getenv("QUILLOTONE_SETTINGS_WAIT_MS");
    int value = text != nullptr ? std::atoi(text) : 0;
    return value > 0 && value < kBusyTimeoutMs ? value : kBusyTimeoutMs;
}

bool IsBusy(int rc) { return (rc & 0xFF) == SQLITE_BUSY || (rc & 0xFF) == SQLITE_LOCKED; }
bool IsDamage(int rc) { return (rc & 0xFF) == SQLITE_CORRUPT || (rc & 0xFF) == SQLITE_NOTADB; }

// The end of one call's wait for a lock, by the clock: SQLite's own busy
// handler waits up to the timeout in each of its calls, so counting calls
// would wait that long many times over.
struct Deadline {
    std::chrono::steady_clock::time_point end =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(BusyTimeoutMs());
    bool Passed() const { return std::chrono::steady_clock::now() >= end; }
};

struct Key {
    int64_t id;
};

class Store {
public:
    static Store& Instance() {
        static Store store;
        return store;
    }

    std::mutex lock;

    bool Ready() { return db != nullptr && !broken; }
    const std::string& Problem() const { return problem; }

    // A step's result: a row, done, or a failure that puts the store out
    // of use (a lock held too long, damage).
    int Step(sqlite3_stmt* s) {
        int rc = sqlite3_step(s);
        if (rc != SQLITE_ROW && rc != SQLITE_DONE) Fail(rc);
        return rc;
    }

    // The id of the key, creating it and its parents when missing; -1 on failure.
    int64_t KeyId(uint64_t hive, const std::string& path) {
        int64_t id = FindKey(hive, path);
        if (id >= 0 || !Ready()) return id;
        if (!Exec("BEGIN IMMEDIATE")) return -1;
        size_t from = 0;
        for (;;) {
            size_t slash = path.find('\\', from);
            std::string prefix = slash == std::string::npos ? path : path.substr(0, slash);
            sqlite3_stmt* s = Statement(kInsertKey);
            sqlite3_bind_int64(s, 1, static_cast<sqlite3_int64>(hive));
            sqlite3_bind_text(s, 2, prefix.c_str(), static_cast<int>(prefix.size()), SQLITE_TRANSIENT);
            int rc = Step(s);
            sqlite3_reset(s);
            if (rc != SQLITE_DONE) {
                Exec("ROLLBACK");
                return -1;
            }
            if (slash == std::string::npos) break;
            from = slash + 1;
        }
        id = FindKey(hive, path);
        if (!Exec("COMMIT")) {
            Exec("ROLLBACK");
            return -1;
        }
        return id;
    }

    int64_t FindKey(uint64_t hive, const std::string& path) {
        sqlite3_stmt* s = Statement(kFindKey);
        if (s == nullptr) return -1;
        sqlite3_bind_int64(s, 1, static_cast<sqlite3_int64>(hive));
        sqlite3_bind_text(s, 2, path.c_str(), static_cast<int>(path.size()), SQLITE_TRANSIENT);
        int64_t id = Step(s) == SQLITE_ROW ? sqlite3_column_int64(s, 0) : -1;
        sqlite3_reset(s);
        return id;
    }

    sqlite3_stmt* Statement(int which) {
        if (!Ready()) return nullptr;
        if (statements[which] == nullptr) {
            Deadline deadline;
            for (;;) {
                int rc =
                    sqlite3_prepare_v3(db, kSql[which], -1, SQLITE_PREPARE_PERSISTENT, &statements[which], nullptr);
                if (rc == SQLITE_OK) break;
                if (!IsBusy(rc) || deadline.Passed()) {
                    Fail(rc);
                    return nullptr;
                }
                sqlite3_sleep(5);
            }
        }
        sqlite3_clear_bindings(statements[which]);
        return statements[which];
    }

    // Rows the last statement changed.
    int Changes() { return db != nullptr ? sqlite3_changes(db) : 0; }

    bool Exec(const char* sql) {
        if (!Ready()) return false;
        int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
        if (rc != SQLITE_OK) Fail(rc);
        return rc == SQLITE_OK;
    }

    // For the set-up statements: switching a new database to WAL mode
    // answers "locked" to every process but one without calling the busy
    // handler, so these wait here, as long as the busy timeout, before a
    // failure counts.
    bool ExecWhenFree(const char* sql, const Deadline& deadline) {
        for (;;) {
            int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
            if (rc == SQLITE_OK) return true;
            if (!IsBusy(rc) || deadline.Passed()) {
                Fail(rc);
                return false;
            }
            sqlite3_sleep(5);
        }
    }

    enum {
        kFindKey,
        kInsertKey,
        kGetValue,
        kSetValue,
        kEnumKeys,
        kCountChildren,
        kDeleteValues,
        kDeleteKey,
        kEnumValues,
        kDeleteValue,
        kCount
    };

private:
    sqlite3* db = nullptr;
    bool broken = false;
    std::string file;
    std::string problem;
    bool movedAside = false;
    sqlite3_stmt* statements[kCount] = {};

    static constexpr const char* kSql[kCount] = {
        "SELECT id FROM keys WHERE hive = ?1 AND path = ?2",
        "INSERT OR IGNORE INTO keys(hive, path) VALUES(?1, ?2)",
        "SELECT type, data FROM vals WHERE key = ?1 AND name = ?2",
        "INSERT OR REPLACE INTO vals(key, name, type, data) VALUES(?1, ?2, ?3, ?4)",
        // Children of a key: one more path component, in creation order.
        ("SELECT k.path FROM keys k, keys p WHERE p.id = ?1 AND k.hive = p.hive AND k.id <> p.id AND "
         "(p.path = '' OR (length(k.path) > length(p.path) + 1 AND substr(k.path, 1, length(p.path) + 1) = "
         "(p.path || '\\') COLLATE NOCASE)) AND instr(substr(k.path, CASE WHEN p.path = '' THEN 1 ELSE "
         "length(p.path) + 2 END), '\\') = 0 ORDER BY k.id LIMIT 1 OFFSET ?2"),
        ("SELECT count(*) FROM keys WHERE hive = ?1 AND length(path) > length(?2) + 1 AND "
         "substr(path, 1, length(?2) + 1) = (?2 || '\\') COLLATE NOCASE"),
        "DELETE FROM vals WHERE key = ?1",
        "DELETE FROM keys WHERE id = ?1",
        "SELECT name FROM vals WHERE key = ?1 ORDER BY name LIMIT 1 OFFSET ?2",
        "DELETE FROM vals WHERE key = ?1 AND name = ?2",
    };

    Store() {
        file = ConfigFolder();
        if (file.empty()) return;
        file += "/settings.db";
        if (sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                            nullptr) != SQLITE_OK) {
            Broken();
            return;
        }
        sqlite3_busy_timeout(db, BusyTimeoutMs());
        // Synchronous NORMAL in WAL mode: a commit survives any crash of a
        // process; only a power loss may take the last commits.
        Deadline deadline;
        ExecWhenFree("PRAGMA journal_mode=WAL", deadline) && ExecWhenFree("PRAGMA synchronous=NORMAL", deadline) &&
            ExecWhenFree(
                "CREATE TABLE IF NOT EXISTS keys(id INTEGER PRIMARY KEY, hive INTEGER NOT NULL, "
                "path TEXT NOT NULL COLLATE NOCASE, UNIQUE(hive, path))",
                deadline) &&
            ExecWhenFree(
                "CREATE TABLE IF NOT EXISTS vals(key INTEGER NOT NULL, name TEXT NOT NULL COLLATE NOCASE, "
                "type INTEGER NOT NULL, data BLOB, PRIMARY KEY(key, name)) WITHOUT ROWID",
                deadline);
    }

    ~Store() {
        if (movedAside) return;
        for (sqlite3_stmt* s : statements) sqlite3_finalize(s);
        if (db != nullptr) sqlite3_close(db);
    }

    void Broken() { Fail(db != nullptr ? sqlite3_errcode(db) : SQLITE_NOMEM); }

    // Puts the store out of use for this process, with one line that says
    // why. A damaged file is moved aside first, whole, with its log.
    void Fail(int rc) {
        if (broken) return;
        broken = true;
        std::string reason = db != nullptr ? sqlite3_errmsg(db) : "no memory";
        if (IsBusy(rc)) {
            problem = "the settings in '" + file + "' are locked by another program (waited " +
                      std::to_string(BusyTimeoutMs() / 1000.0).substr(0, 4) + " s); close it and try again";
        } else if (IsDamage(rc)) {
            problem = "the settings in '" + file + "' are damaged (" + reason + ")" + MoveAside();
        } else {
            problem = "the settings in '" + file + "' can't be used (" + reason + "); defaults apply";
        }
        std::fprintf(stderr, "Quillotone: %s\n", problem.c_str());
    }

    // Renames the damaged database (and its write-ahead log) to
    // "settings.db.damaged-<time>"; the text that tells the user.
    // The connection stays open, unused, until the process ends: closing it
    // would check the log into the moved file and then delete the log by
    // its old name, which a fresh store may own by then.
    std::string MoveAside() {
        char stamp[32];
        std::time_t now = std::time(nullptr);
        std::strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", std::localtime(&now));
        // A link never replaces a file, so an older damaged copy of the
        // same second stays too.
        std::string aside = file + ".damaged-" + stamp;
        for (int n = 2; ::link(file.c_str(), aside.c_str()) != 0; ++n) {
            if (errno != EEXIST || n > 1000) return "; it could not be moved aside and is left as it is, unused";
            aside = file + ".damaged-" + stamp + "-" + std::to_string(n);
        }
        ::unlink(file.c_str());
        movedAside = true;
        ::rename((file + "-wal").c_str(), (aside + "-wal").c_str());
        ::unlink((file + "-shm").c_str());
        return "; it was kept as '" + aside + "', and the settings start afresh with their defaults";
    }

    static std::string ConfigFolder() {
        std::string folder;
        const char* explicitFolder = std::getenv("QUILLOTONE_CONFIG_DIR");
        const char* xdg = std::getenv("XDG_CONFIG_HOME");
        const char* home = std::getenv("HOME");
        if (explicitFolder != nullptr && explicitFolder[0] != 0) {
            folder = explicitFolder;
        } else if (xdg != nullptr && xdg[0] == '/') {
            folder = std::string(xdg) + "/quillotone";
        } else if (home != nullptr && home[0] == '/') {
            folder = std::string(home) + "/.config/quillotone";
        } else {
            return std::string();
        }
        while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
        // Make the folder and those above it.
        for (size_t slash = folder.find('/', 1);; slash = folder.find('/', slash + 1)) {
            std::string part = slash == std::string::npos ? folder : folder.substr(0, slash);
            if (::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) return std::string();
            if (slash == std::string::npos) break;
        }
        return folder;
    }
};

// Key paths are compared without leading or trailing backslashes.
std::string NormalPath(const char16_t* path) {
    std::string p = path != nullptr ? NativePath(path) : std::string();
    size_t first = p.find_first_not_of('\\');
    if (first == std::string::npos) return std::string();
    size_t last = p.find_last_not_of('\\');
    return p.substr(first, last - first + 1);
}

struct OpenKey {
    int64_t id;
    uint64_t hive;
    std::string path;
};

OpenKey* Of(clRegKey key) { return reinterpret_cast<OpenKey*>(key); }

std::string ValueName(const char16_t* name) { return name != nullptr ? NativePath(name) : std::string(); }

}  // namespace

long PlatformRegCreateKey(uint64_t hive, const char16_t* path, uint32_t /*access*/, clRegKey* key) {
    *key = 0;
    Store& store = Store::Instance();
    std::lock_guard<std::mutex> guard(store.lock);
    std::string normal = NormalPath(path);
    int64_t id = store.KeyId(hive, normal);
    if (id < 0) return 5;  // access denied: the store can't be used
    *key = reinterpret_cast<clRegKey>(new OpenKey{id, hive, normal});
    return clRegOk;
}

long PlatformRegQueryValue(clRegKey key, const char16_t* name, uint32_t* type, void* data, uint32_t* bytes) {
    if (key == 0) return 6;
    Store& store = Store::Instance();
    std::lock_guard<std::mutex> guard(store.lock);
    sqlite3_stmt* s = store.Statement(Store::kGetValue);
    if (s == nullptr) return clRegNotFound;
    std::string valueName = ValueName(name);
    sqlite3_bind_int64(s, 1, Of(key)->id);
    sqlite3_bind_text(s, 2, valueName.c_str(), static_cast<int>(valueName.size()), SQLITE_TRANSIENT);
    long rc = clRegNotFound;
    if (store.Step(s) == SQLITE_ROW) {
        if (type != nullptr) *type = static_cast<uint32_t>(sqlite3_column_int(s, 0));
        const void* blob = sqlite3_column_blob(s, 1);
        auto size = static_cast<uint32_t>(sqlite3_column_bytes(s, 1));
        rc = clRegOk;
        if (bytes != nullptr) {
            if (data != nullptr && *bytes < size) {
                rc = clRegMoreData;
            } else if (data != nullptr && size > 0) {
                std::memcpy(data, blob, size);
            }
            *bytes = size;
        }
    }
    sqlite3_reset(s);
    return rc;
}

long PlatformRegSetValue(clRegKey key, const char16_t* name, uint32_t type, const void* data, uint32_t bytes) {
    if (key == 0) return 6;
    Store& store = Store::Instance();
    std::lock_guard<std::mutex> guard(store.lock);
    sqlite3_stmt* s = store.Statement(Store::kSetValue);
    if (s == nullptr) return 5;
    std::string valueName = ValueName(name);
    sqlite3_bind_int64(s, 1, Of(key)->id);
    sqlite3_bind_text(s, 2, valueName.c_str(), static_cast<int>(valueName.size()), SQLITE_TRANSIENT);
    sqlite3_bind_int(s, 3, static_cast<int>(type));
    sqlite3_bind_blob(s, 4, data != nullptr ? data : "", static_cast<int>(data != nullptr ? bytes : 0),
                      SQLITE_TRANSIENT);
    int rc = store.Step(s);
    sqlite3_reset(s);
    return rc == SQLITE_DONE ? clRegOk : 5;
}

namespace {

// Row `index` of an enumeration under `key`; sub-keys are stored by their
// whole path, of which the caller wants the last part.
long EnumRow(clRegKey key, uint32_t index, int statement, bool lastPart, clString& name) {
    if (key == 0) return 6;
    Store& store = Store::Instance();
    std::lock_guard<std::mutex> guard(store.lock);
    sqlite3_stmt* s = store.Statement(statement);
    if (s == nullptr) return clRegNoMoreItems;
    sqlite3_bind_int64(s, 1, Of(key)->id);
    sqlite3_bind_int64(s, 2, index);
    long rc = clRegNoMoreItems;
    if (store.Step(s) == SQLITE_ROW) {
        const char* text = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
        const char* slash = lastPart ? std::strrchr(text, '\\') : nullptr;
        FromNative(slash == nullptr ? text : slash + 1, name);
        rc = clRegOk;
    }
    sqlite3_reset(s);
    return rc;
}

}  // namespace

long PlatformRegEnumKey(clRegKey key, uint32_t index, clString& name) {
    return EnumRow(key, index, Store::kEnumKeys, true, name);
}

long PlatformRegEnumValue(clRegKey key, uint32_t index, clString& name) {
    return EnumRow(key, index, Store::kEnumValues, false, name);
}

long PlatformRegDeleteValue(clRegKey key, const char16_t* name) {
    if (key == 0) return 6;
    Store& store = Store::Instance();
    std::lock_guard<std::mutex> guard(store.lock);
    sqlite3_stmt* s = store.Statement(Store::kDeleteValue);
    if (s == nullptr) return 5;
    std::string valueName = ValueName(name);
    sqlite3_bind_int64(s, 1, Of(key)->id);
    sqlite3_bind_text(s, 2, valueName.c_str(), static_cast<int>(valueName.size()), SQLITE_TRANSIENT);
    int step = store.Step(s);
    sqlite3_reset(s);
    if (step != SQLITE_DONE) return 5;
    return store.Changes() > 0 ? clRegOk : clRegNotFound;
}

long PlatformRegDeleteKey(clRegKey parent, const char16_t* name) {
    if (parent == 0) return 6;
    Store& store = Store::Instance();
    std::lock_guard<std::mutex> guard(store.lock);
    OpenKey* p = Of(parent);
    std::string child = NormalPath(name);
    if (child.empty()) return clRegNotFound;
    std::string path = p->path.empty() ? child : p->path + "\\" + child;
    int64_t id = store.FindKey(p->hive, path);
    if (id < 0) return clRegNotFound;
    sqlite3_stmt* count = store.Statement(Store::kCountChildren);
    if (count == nullptr) return 5;
    sqlite3_bind_int64(count, 1, static_cast<sqlite3_int64>(p->hive));
    sqlite3_bind_text(count, 2, path.c_str(), static_cast<int>(path.size()), SQLITE_TRANSIENT);
    int64_t children = store.Step(count) == SQLITE_ROW ? sqlite3_column_int64(count, 0) : 1;
    sqlite3_reset(count);
    if (children > 0) return 5;  // as RegDeleteKeyW: only a key without sub-keys goes
    if (!store.Exec("BEGIN IMMEDIATE")) return 5;
    for (int which : {Store::kDeleteValues, Store::kDeleteKey}) {
        sqlite3_stmt* s = store.Statement(which);
        sqlite3_bind_int64(s, 1, id);
        store.Step(s);
        sqlite3_reset(s);
    }
    return store.Exec("COMMIT") ? clRegOk : (store.Exec("ROLLBACK"), 5);
}

void PlatformRegCloseKey(clRegKey key) { delete Of(key); }

clString PlatformRegProblem() {
    Store& store = Store::Instance();
    std::lock_guard<std::mutex> guard(store.lock);
    clString text;
    FromNative(store.Problem().c_str(), text);
    return text;
}

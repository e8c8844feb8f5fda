// owned.h - one owning handle for each thing that must be released, so that every early return is safe.
//
// release() only where a callee or a caller takes over.
#pragma once

#include <cJSON.h>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sqlite3.h>
#include <type_traits>
#include <unistd.h>

struct JSON_DELETER_T {
    void operator()(cJSON *tree) const
    {
        cJSON_Delete(tree);
    }
};
struct TEXT_DELETER_T {
    void operator()(void *text) const
    {
        free(text);
    }
};
struct FILE_DELETER_T {
    void operator()(FILE *stream) const
    {
        fclose(stream);
    }
};
struct DB_DELETER_T {
    void operator()(sqlite3 *db) const
    {
        sqlite3_close(db);
    }
};
struct STATEMENT_DELETER_T {
    void operator()(sqlite3_stmt *statement) const
    {
        sqlite3_finalize(statement);
    }
};
struct SQLITE_TEXT_DELETER_T {
    void operator()(char *text) const
    {
        sqlite3_free(text);
    }
};

using OWNED_JSON = std::unique_ptr<cJSON, JSON_DELETER_T>;
using OWNED_TEXT = std::unique_ptr<char, TEXT_DELETER_T>; // from malloc, calloc or a cJSON print
using OWNED_FILE = std::unique_ptr<FILE, FILE_DELETER_T>;
using OWNED_DB = std::unique_ptr<sqlite3, DB_DELETER_T>;
using OWNED_STATEMENT = std::unique_ptr<sqlite3_stmt, STATEMENT_DELETER_T>;
using OWNED_SQLITE_TEXT = std::unique_ptr<char, SQLITE_TEXT_DELETER_T>;

// An array from calloc: null when there is no memory. For tables whose allocation failure has a documented result.
template <typename T> using OWNED_ARRAY = std::unique_ptr<T[], TEXT_DELETER_T>;
template <typename T> [[nodiscard]] OWNED_ARRAY<T> ownedArray(size_t count)
{
    return OWNED_ARRAY<T>(static_cast<T *>(calloc(count == 0 ? 1 : count, sizeof(T))));
}

// Double the room of such an array; what is new is not zeroed. False, with array and capacity as they were, when there
// is no memory.
template <typename T> [[nodiscard]] bool ownedArrayDouble(OWNED_ARRAY<T> *array, size_t *capacity)
{
    static_assert(std::is_trivially_copyable<T>::value, "moved as bytes");
    void *grown = realloc(array->get(), 2 * *capacity * sizeof(T));
    if (grown == nullptr)
        return false;
    (void)array->release(); // realloc has freed it or given it back
    array->reset(static_cast<T *>(grown));
    *capacity *= 2;
    return true;
}

// A descriptor; -1 when it holds none.
struct OWNED_FD_T {
    int fd = -1;
    OWNED_FD_T() = default;
    explicit OWNED_FD_T(int taken) : fd(taken)
    {
    }
    OWNED_FD_T(const OWNED_FD_T &) = delete;
    OWNED_FD_T &operator=(const OWNED_FD_T &) = delete;
    ~OWNED_FD_T()
    {
        if (fd >= 0)
            close(fd);
    }
    int release()
    {
        int given = fd;
        fd = -1;
        return given;
    }
};

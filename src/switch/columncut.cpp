#include "switch/columncut.h"

// The file is read once and its lines are found once; each cut is then a look into memory. Bytes are bytes here, as in
// the C locale. Uses nothing but the owning handles of runtime/.

#include "runtime/result.h"

#include <algorithm>
#include <cstring>

namespace {
constexpr size_t READ_STEP = 65536;
constexpr uint32_t FOUR_DIGITS = 9999;
constexpr char BLANKS[] = " \t"; // between words; a carriage return is part of one

// The rest of the stream, terminated, into file->text.
int streamRead(CUT_FILE_T *file, FILE *stream);
int linesFind(CUT_FILE_T *file);

// Bytes of a line without its line end; an empty one for a line that does not exist.
struct LINE_T {
    const char *begin;
    size_t length;
};
LINE_T lineAt(const CUT_FILE_T *file, uint32_t line);
void cutCopy(const char *from, size_t length, char out[CUT_SIZE]);
uint32_t firstFourDigits(uint32_t number);
} // namespace

int cutFileLoad(CUT_FILE_T *file, FILE *stream)
{
    *file = CUT_FILE_T();
    if (stream == nullptr)
        return RESULT_OK;
    int result = streamRead(file, stream);
    if (result == RESULT_OK)
        result = linesFind(file);
    if (result != RESULT_OK)
        *file = CUT_FILE_T();
    return result;
}

uint32_t cutLineCount(const CUT_FILE_T *file)
{
    return firstFourDigits(file->lines);
}

uint32_t cutFirstLineWith(const CUT_FILE_T *file, const char *text)
{
    if (file->lines == 0)
        return 0;
    const auto *found = static_cast<const char *>(memmem(file->text.get(), file->length, text, strlen(text)));
    if (found == nullptr)
        return 0;
    const size_t *begins = file->begins.get();
    auto offset = static_cast<size_t>(found - file->text.get());
    return firstFourDigits(static_cast<uint32_t>(std::upper_bound(begins, begins + file->lines, offset) - begins));
}

void cutFirstWord(const CUT_FILE_T *file, uint32_t line, char out[CUT_SIZE])
{
    auto isBlank = [](char character) {
        return character != '\0' && strchr(BLANKS, character) != nullptr;
    };
    LINE_T all = lineAt(file, line);
    const char *end = all.begin + all.length;
    const char *begin = std::find_if_not(all.begin, end, isBlank);

    cutCopy(begin, static_cast<size_t>(std::find_if(begin, end, isBlank) - begin), out);
}

void cutColumns(const CUT_FILE_T *file, uint32_t line, size_t from, size_t length, char out[CUT_SIZE])
{
    LINE_T all = lineAt(file, line);
    size_t skipped = std::min(from - 1, all.length);

    cutCopy(all.begin + skipped, std::min(length, all.length - skipped), out);
}

namespace {
int streamRead(CUT_FILE_T *file, FILE *stream)
{
    size_t got = READ_STEP;
    while (got == READ_STEP) {
        auto *grown = static_cast<char *>(realloc(file->text.get(), file->length + READ_STEP + 1));
        if (grown == nullptr)
            return RESULT_NO_MEMORY;
        (void)file->text.release(); // realloc has taken the old one
        file->text.reset(grown);
        got = fread(grown + file->length, 1, READ_STEP, stream);
        file->length += got;
        grown[file->length] = '\0';
    }
    return RESULT_OK;
}

int linesFind(CUT_FILE_T *file)
{
    const char *text = file->text.get();
    const char *end = text + file->length;
    auto lines = static_cast<size_t>(std::count(text, end, '\n')) + 1; // the last may be none

    file->begins = ownedArray<size_t>(lines);
    if (file->begins == nullptr)
        return RESULT_NO_MEMORY;
    for (const char *at = text; at < end; at = std::find(at, end, '\n') + 1)
        file->begins[file->lines++] = static_cast<size_t>(at - text);
    return RESULT_OK;
}

LINE_T lineAt(const CUT_FILE_T *file, uint32_t line)
{
    if (line < 1 || line > file->lines)
        return {"", 0};
    size_t begin = file->begins[line - 1];
    size_t end = line < file->lines ? file->begins[line] : file->length;
    if (end > begin && file->text.get()[end - 1] == '\n')
        end--;
    return {file->text.get() + begin, end - begin};
}

void cutCopy(const char *from, size_t length, char out[CUT_SIZE])
{
    size_t kept = std::min(length, CUT_SIZE - 1);
    memcpy(out, from, kept);
    out[kept] = '\0';
    out[strcspn(out, "\r")] = '\0';
    if (strstr(out, "N/A") != nullptr)
        out[0] = '\0';
}

// A count comes through a pipe of which four characters are read.
uint32_t firstFourDigits(uint32_t number)
{
    while (number > FOUR_DIGITS)
        number /= 10;
    return number;
}
} // namespace

// SPDX-License-Identifier: Apache-2.0
/* The C library's functions that a program prints with, as far as it prints on standard output: the
 * recorder keeps what is printed and where it stands among the calls. Each does what the C library's
 * own does, with that one's lock held, so that what is kept has the order of what is printed. */
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "formatted.h"
#include "output.h"
#include "symbols.h"
#include "wait.h"

#undef putc
#undef putchar

#define C_LIBRARY(function) NEXT_DEFINITION(function)

namespace {

class Printing {
  public:
    Printing(const char* text, size_t length)
        : text_(text), length_(length), kept_(output_is_kept()) {
        if (kept_)
            lock_output();
    }
    ~Printing() {
        if (!kept_)
            return;
        const int error = errno;
        output_printed(text_, length_);
        ::funlockfile(stdout);
        errno = error;
    }
    Printing(const Printing&) = delete;
    Printing& operator=(const Printing&) = delete;

  private:
    const char* text_;
    size_t length_;
    bool kept_;
};

__attribute__((format(printf, 2, 0))) int print(std::FILE* stream, const char* format,
                                                va_list args) {
    if (stream != stdout)
        return C_LIBRARY(vfprintf)(stream, format, args);
    va_list again;
    va_copy(again, args);
    const Formatted formatted(format, again);
    va_end(again);
    const Printing printing(formatted.text(), formatted.length());
    return C_LIBRARY(vfprintf)(stream, format, args);
}

} // namespace

extern "C" {

int vfprintf(std::FILE* stream, const char* format, va_list args) {
    return print(stream, format, args);
}

int vprintf(const char* format, va_list args) { return print(stdout, format, args); }

int fprintf(std::FILE* stream, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = print(stream, format, args);
    va_end(args);
    return result;
}

int printf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = print(stdout, format, args);
    va_end(args);
    return result;
}

/* What a build with checked formats calls instead. */
__attribute__((format(printf, 3, 0))) int __vfprintf_chk(std::FILE* stream, int, const char* format,
                                                         va_list args) {
    return print(stream, format, args);
}

__attribute__((format(printf, 2, 0))) int __vprintf_chk(int, const char* format, va_list args) {
    return print(stdout, format, args);
}

__attribute__((format(printf, 3, 4))) int __fprintf_chk(std::FILE* stream, int, const char* format,
                                                        ...) {
    va_list args;
    va_start(args, format);
    const int result = print(stream, format, args);
    va_end(args);
    return result;
}

__attribute__((format(printf, 2, 3))) int __printf_chk(int, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = print(stdout, format, args);
    va_end(args);
    return result;
}

int fputs(const char* text, std::FILE* stream) {
    if (stream != stdout)
        return C_LIBRARY(fputs)(text, stream);
    const Printing printing(text, std::strlen(text));
    return C_LIBRARY(fputs)(text, stream);
}

int puts(const char* text) {
    const size_t length = std::strlen(text);
    char small[1024];
    char* const line = length < sizeof small ? small : static_cast<char*>(std::malloc(length + 1));
    if (line == nullptr)
        return C_LIBRARY(puts)(text);
    std::memcpy(line, text, length);
    line[length] = '\n';
    int result;
    {
        const Printing printing(line, length + 1);
        result = C_LIBRARY(puts)(text);
    }
    if (line != small)
        std::free(line);
    return result;
}

int fputc(int character, std::FILE* stream) {
    if (stream != stdout)
        return C_LIBRARY(fputc)(character, stream);
    const char byte = static_cast<char>(character);
    const Printing printing(&byte, 1);
    return C_LIBRARY(fputc)(character, stream);
}

int putc(int character, std::FILE* stream) { return fputc(character, stream); }

int putchar(int character) { return fputc(character, stdout); }

size_t fwrite(const void* data, size_t size, size_t count, std::FILE* stream) {
    if (stream != stdout)
        return C_LIBRARY(fwrite)(data, size, count, stream);
    const Printing printing(static_cast<const char*>(data), size * count);
    return C_LIBRARY(fwrite)(data, size, count, stream);
}

} // extern "C"

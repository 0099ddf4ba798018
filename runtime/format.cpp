// The formatter behind qorPrint for the conversions that glibc prints
// differently from the listing's conventions: exponents of "%E"/"%e"/"%G"/"%g"
// have at least three digits, and "%I64d" is a signed 64-bit decimal.
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "runtime/output.h"

namespace {

struct Spec {
    std::string flags;
    int width = -1;  // -1: none
    int precision = -1;
    bool leftAlign = false;
    bool zeroPad = false;
    enum { kInt, kLong, kLongLong, kSize, kInt64, kLongDouble } length = kInt;
    char conversion = 0;
};

// Reads one conversion after '%'; returns the position behind it.
const char* parseSpec(const char* p, Spec& spec, va_list& args)
{
    while (*p != '\0' && std::strchr("-+ #0", *p) != nullptr) {
        if (*p == '-') spec.leftAlign = true;
        if (*p == '0') spec.zeroPad = true;
        spec.flags += *p++;
    }
    if (*p == '*') {
        spec.width = va_arg(args, int);
        if (spec.width < 0) {
            spec.leftAlign = true;
            spec.flags += '-';
            spec.width = -spec.width;
        }
        ++p;
    } else if (*p >= '0' && *p <= '9') {
        spec.width = 0;
        while (*p >= '0' && *p <= '9') spec.width = spec.width * 10 + (*p++ - '0');
    }
    if (*p == '.') {
        ++p;
        spec.precision = 0;
        if (*p == '*') {
            spec.precision = va_arg(args, int);
            ++p;
        } else {
            while (*p >= '0' && *p <= '9') spec.precision = spec.precision * 10 + (*p++ - '0');
        }
    }
    if (std::strncmp(p, "I64", 3) == 0) {
        spec.length = Spec::kInt64;
        p += 3;
    } else if (p[0] == 'l' && p[1] == 'l') {
        spec.length = Spec::kLongLong;
        p += 2;
    } else if (*p == 'l') {
        spec.length = Spec::kLong;
        ++p;
    } else if (*p == 'z') {
        spec.length = Spec::kSize;
        ++p;
    } else if (*p == 'L') {
        spec.length = Spec::kLongDouble;
        ++p;
    } else {
        while (*p == 'h') ++p;  // promoted to int anyway
    }
    spec.conversion = *p;
    return *p != '\0' ? p + 1 : p;
}

std::string specText(const Spec& spec, const char* length, bool withWidth)
{
    std::string text = "%";
    text += spec.flags;
    if (withWidth && spec.width >= 0) text += std::to_string(spec.width);
    if (spec.precision >= 0) {
        text += '.';
        text += std::to_string(spec.precision);
    }
    text += length;
    text += spec.conversion;
    return text;
}

template <typename T>
void appendWith(std::string& out, const std::string& spec, T value)
{
    char small[128];
    int n = std::snprintf(small, sizeof small, spec.c_str(), value);
    if (n < 0) return;
    if (static_cast<size_t>(n) < sizeof small) {
        out.append(small, static_cast<size_t>(n));
        return;
    }
    std::string large(static_cast<size_t>(n) + 1, '\0');
    std::snprintf(large.data(), large.size(), spec.c_str(), value);
    out.append(large.data(), static_cast<size_t>(n));
}

// Widens a two-digit exponent to three digits: 1.5E+00 -> 1.5E+000.
void widenExponent(std::string& text)
{
    size_t e = text.find_first_of("eE");
    if (e == std::string::npos || e + 1 >= text.size()) return;
    size_t digits = e + 2;
    if (text[e + 1] != '+' && text[e + 1] != '-') return;
    size_t count = text.size() - digits;
    if (count < 3) text.insert(digits, 3 - count, '0');
}

// Pads a formatted number to the spec's width, as printf would have.
void padNumber(std::string& out, std::string text, const Spec& spec)
{
    int missing = spec.width - static_cast<int>(text.size());
    if (missing > 0) {
        if (spec.leftAlign) {
            text.append(static_cast<size_t>(missing), ' ');
        } else if (spec.zeroPad && !text.empty() && (text[0] >= '0' && text[0] <= '9')) {
            text.insert(0, static_cast<size_t>(missing), '0');
        } else if (spec.zeroPad && !text.empty() && std::strchr("+- ", text[0]) != nullptr) {
            text.insert(1, static_cast<size_t>(missing), '0');
        } else {
            text.insert(0, static_cast<size_t>(missing), ' ');
        }
    }
    out += text;
}

void appendFloating(std::string& out, const Spec& spec, va_list& args)
{
    std::string text;
    if (spec.length == Spec::kLongDouble) {
        appendWith(text, specText(spec, "L", false), va_arg(args, long double));
    } else {
        appendWith(text, specText(spec, "", false), va_arg(args, double));
    }
    if (std::strchr("eEgG", spec.conversion) != nullptr) widenExponent(text);
    padNumber(out, text, spec);
}

void appendInteger(std::string& out, const Spec& spec, va_list& args)
{
    bool isSigned = spec.conversion == 'd' || spec.conversion == 'i';
    switch (spec.length) {
        case Spec::kInt64:
        case Spec::kLongLong:
            if (isSigned) {
                appendWith(out, specText(spec, "ll", true), va_arg(args, long long));
            } else {
                appendWith(out, specText(spec, "ll", true), va_arg(args, unsigned long long));
            }
            break;
        case Spec::kLong:
            if (isSigned) {
                appendWith(out, specText(spec, "l", true), va_arg(args, long));
            } else {
                appendWith(out, specText(spec, "l", true), va_arg(args, unsigned long));
            }
            break;
        case Spec::kSize:
            appendWith(out, specText(spec, "z", true), va_arg(args, size_t));
            break;
        default:
            if (isSigned) {
                appendWith(out, specText(spec, "", true), va_arg(args, int));
            } else {
                appendWith(out, specText(spec, "", true), va_arg(args, unsigned));
            }
            break;
    }
}

}  // namespace

int formatAppend(std::string& out, const char* format, va_list argsIn)
{
    va_list args;
    va_copy(args, argsIn);
    size_t before = out.size();
    const char* p = format;
    while (*p != '\0') {
        const char* percent = std::strchr(p, '%');
        if (percent == nullptr) {
            out.append(p);
            break;
        }
        out.append(p, static_cast<size_t>(percent - p));
        if (percent[1] == '%') {
            out += '%';
            p = percent + 2;
            continue;
        }
        Spec spec;
        p = parseSpec(percent + 1, spec, args);
        switch (spec.conversion) {
            case 'd': case 'i': case 'u': case 'x': case 'X': case 'o':
                appendInteger(out, spec, args);
                break;
            case 'c':
                appendWith(out, specText(spec, "", true), va_arg(args, int));
                break;
            case 's': {
                const char* text = va_arg(args, const char*);
                appendWith(out, specText(spec, "", true), text != nullptr ? text : "(null)");
                break;
            }
            case 'p':
                appendWith(out, specText(spec, "", true), va_arg(args, void*));
                break;
            case 'e': case 'E': case 'f': case 'F': case 'g': case 'G':
                appendFloating(out, spec, args);
                break;
            default:
                break;  // an unknown conversion prints nothing
        }
    }
    va_end(args);
    return static_cast<int>(out.size() - before);
}

std::string formatText(const char* format, ...)
{
    std::string out;
    va_list args;
    va_start(args, format);
    formatAppend(out, format, args);
    va_end(args);
    return out;
}

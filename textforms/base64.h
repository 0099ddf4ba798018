// Base64 text (RFC 4648: the standard alphabet of section 4 and the URL-safe
// one of section 5) into octets, line by line, so that a fault can name the
// line it stands on.
#pragma once

#include <cstddef>
#include <cstdint>

// Why a text form doesn't decode.
enum class TextFault : uint8_t {
    None,
    BadCharacter,      // a character of neither alphabet, nor white space
    MisplacedPadding,  // '=' where no group of four can end
    DataAfterPadding,  // base64 characters behind the padding
    LoneCharacter,     // the last group holds one character: no whole octet
    NoEndLine,         // a PEM block without its END line
    NoBlock,           // a PEM file without a BEGIN line
};

struct TextFaultAt {
    TextFault fault;
    long line;          // 1 for the first line; 0 when no line is meant
    uint8_t character;  // the character of BadCharacter
};

// The lines of a text: each without its '\n'; a last line without '\n'
// counts too.
class TextLines {
public:
    TextLines(const char* text, size_t length) : text_(text), length_(length) {}
    bool next(const char*& line, size_t& lineLength);
    long number() const { return number_; }

private:
    const char* text_;
    size_t length_;
    size_t at_ = 0;
    long number_ = 0;
};

// Decodes into `out`, which needs room for as many octets as characters
// are given. Groups of four characters give three octets; a last group of
// two or three characters, padded or not, gives one or two.
class Base64Decoder {
public:
    explicit Base64Decoder(uint8_t* out) : out_(out) {}
    // One line of text; white space is passed over.
    bool take(const char* text, size_t length, long line, TextFaultAt& fault);
    // The last group; false when it holds a single character.
    bool finish(TextFaultAt& fault);
    size_t written() const { return written_; }

private:
    uint8_t* out_;
    size_t written_ = 0;
    uint32_t group_ = 0;   // the bits of the characters of the open group
    int characters_ = 0;   // characters in the open group, 0 to 3
    int padding_ = 0;      // '=' seen behind the data
    long lastLine_ = 0;    // the line of the last base64 character
};

// A whole file of base64 (either alphabet, white space anywhere, padding
// optional). Returns the fault, None when the text decoded.
TextFaultAt decodeBase64Text(const char* text, size_t length, uint8_t* out, size_t& written);

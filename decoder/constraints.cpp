#include "decoder/constraints.h"

#include <cstring>

#include "decoder/control_table.h"
#include "decoder/errors.h"
#include "decoder/values.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"

namespace {

// The permitted alphabets, sorted for bisection.
constexpr uint8_t kNumeric[] = {' ', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9'};
constexpr uint8_t kPrintable[] = {' ', '\'', '(', ')', '+', ',', '-', '.', '/', '0', '1', '2', '3', '4', '5',
                                  '6', '7', '8', '9', ':', '=', '?', 'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H',
                                  'I', 'J', 'K', 'L', 'M', 'N', 'O', 'P', 'Q', 'R', 'S', 'T', 'U', 'V', 'W',
                                  'X', 'Y', 'Z', 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j', 'k', 'l',
                                  'm', 'n', 'o', 'p', 'q', 'r', 's', 't', 'u', 'v', 'w', 'x', 'y', 'z'};
static_assert(sizeof kPrintable == 74);

struct Alphabet {
    const uint8_t* characters;
    size_t count;
    uint8_t first;  // for the ranges: the first and last octet
    uint8_t last;
};

bool alphabetOf(uint32_t stringCode, Alphabet& alphabet)
{
    switch (stringCode) {
        case 18: alphabet = {kNumeric, sizeof kNumeric, 0, 0}; return true;
        case 19: alphabet = {kPrintable, sizeof kPrintable, 0, 0}; return true;
        case 22: alphabet = {nullptr, 128, 0, 127}; return true;
        case 26: alphabet = {nullptr, 95, 32, 126}; return true;
        default: return false;
    }
}

bool inAlphabet(const Alphabet& alphabet, uint8_t octet)
{
    if (alphabet.characters == nullptr) return octet >= alphabet.first && octet <= alphabet.last;
    const uint8_t* table = alphabet.characters;
    size_t low = 0;
    size_t high = alphabet.count - 1;
    if (octet <= table[low]) return octet == table[low];
    if (octet >= table[high]) return octet == table[high];
    while (high - low > 1) {
        size_t middle = (low + high) / 2;
        if (table[middle] == octet) return true;
        if (table[middle] < octet) {
            low = middle;
        } else {
            high = middle;
        }
    }
    return false;
}

void checkType(RunContext* context, const ControlTable& table, const TypeRecord& type, void* value)
{
    switch (type.stringCode) {
        case 7: case 20: case 21: case 25: case 27:
            return;  // no check at all
        default:
            break;
    }
    ErrorFrame frame = {nullptr, nullptr, errorNameOfType(type), 0, FRAME_TYPE};
    FramePush push(context, frame);
    DecodeState& decode = context->decode;
    if (type.kind == KIND_OBJECT_IDENTIFIER || type.kind == KIND_RELATIVE_OID) {
        const auto& oid = *static_cast<const EncodedOid*>(value);
        if (checkIdentifier(oid.octets, oid.length) != 0) reportError(context, RT_BAD_OID, 0);
    }
    if ((type.typeFlags & TF_CONSTRAINED) != 0) {
        const char* text = *static_cast<const char* const*>(value);
        decode.pendingEntry = RT_PROPERTY_SETTINGS;
        decode.pendingArgument = text;
        int count = 0;
        const uint32_t* masks = timeMasksOfType(table, type, count);
        TimePropertiesEntry check = context->state->hooks.timePropertiesEntry;
        if (check != nullptr && !check(context, text, masks, count)) {
            reportError(context, decode.pendingEntry,
                        ErrorArgument::ofText(static_cast<const char*>(decode.pendingArgument)));
        }
    }
    Alphabet alphabet{};
    if (alphabetOf(type.stringCode, alphabet)) {
        const uint8_t* text = nullptr;
        uint32_t length = 0;
        if (type.kind == KIND_COUNTED_TEXT) {
            const auto& counted = *static_cast<const CountedValue*>(value);
            text = static_cast<const uint8_t*>(counted.data);
            length = counted.length;
        } else {
            text = *static_cast<const uint8_t* const*>(value);
            length = text != nullptr ? static_cast<uint32_t>(std::strlen(reinterpret_cast<const char*>(text))) : 0;
        }
        uint8_t bad = 0;
        if (!checkAlphabet(type, text, length, bad)) reportError(context, RT_ALPHABET, bad);
    }
}

}  // namespace

bool checkAlphabet(const TypeRecord& type, const uint8_t* text, uint32_t length, uint8_t& bad)
{
    Alphabet alphabet{};
    if (!alphabetOf(type.stringCode, alphabet)) return true;
    for (uint32_t i = 0; i < length; ++i) {
        if (!inAlphabet(alphabet, text[i])) {
            bad = text[i];
            return false;
        }
    }
    return true;
}

int checkIdentifier(const uint8_t* octets, uint32_t length)
{
    if (length == 0) return IDENTIFIER_UNFINISHED;
    // A subidentifier can't stop in the middle.
    return (octets[length - 1] & 0x80) != 0 ? IDENTIFIER_UNFINISHED : 0;
}

void qorCheckConstraints(RunContext* context, int pdu, void* value, const ControlTable* table)
{
    DecodeState& decode = context->decode;
    decode.pendingEntry = 0;
    decode.pendingArgument = nullptr;
    context->errorText[0] = '\0';
    ErrorFrame root = {nullptr, nullptr, nullptr, pdu, FRAME_ROOT};
    FramePush push(context, root);
    checkType(context, *table, typeOfPdu(*table, pdu), value);
}

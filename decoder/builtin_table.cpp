// The built-in control table: one simple type for each universal type that
// the listings show readably. The type index is the PDU number; types 0 and
// 31 have no PDU.
#include <cstddef>

#include "decoder/ber_decode.h"
#include "decoder/constraints.h"
#include "decoder/control_table.h"
#include "decoder/primitive.h"
#include "decoder/values.h"
#include "runtime/context.h"
#include "timecheck/time_properties.h"

namespace {

constexpr uint16_t kPduMap[30] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                                  16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30};

// Pairs of (count 1, universal tag).
constexpr uint16_t kTagLists[58] = {1, 6,  1, 1,  1, 2,  1, 3,  1, 4,  1, 5,  1, 13, 1, 9,  1, 18, 1, 19,
                                    1, 20, 1, 21, 1, 22, 1, 25, 1, 26, 1, 27, 1, 28, 1, 30, 1, 12, 1, 7,
                                    1, 23, 1, 24, 1, 14, 1, 31, 1, 32, 1, 33, 1, 34, 1, 35, 1, 36};

constexpr ConstraintRecord kConstraints[4] = {
    {0, CK_TIME_PROPERTIES, 0, 0x00000001},  // DATE
    {0, CK_TIME_PROPERTIES, 0, 0x00010001},  // TIME-OF-DAY
    {0, CK_TIME_PROPERTIES, 0, 0x00020002},  // DATE-TIME
    {0, CK_TIME_PROPERTIES, 0, 0x00040001},  // DURATION
};

constexpr uint32_t kTimePropertyMasks[5] = {0x1382, 0x0784, 0x138a, 0x0784, 0x0110};

// The memory forms in the layout of this build: the width of a pointer
// decides the size of a length-and-pointer form and where its pointer
// stands, so the records carry the native numbers, not those of a 32-bit
// build.
constexpr uint32_t kCountedSize = sizeof(CountedValue);
constexpr uint16_t kCountedData = offsetof(CountedValue, data);
constexpr uint32_t kOidSize = sizeof(EncodedOid);
constexpr uint16_t kOidData = offsetof(EncodedOid, octets);
constexpr uint32_t kTimeSize = sizeof(TimeRecord);
static_assert(sizeof(HugeInteger) == kOidSize && offsetof(HugeInteger, octets) == kOidData);

// tagListIndex of each type: the position of its pair in kTagLists.
constexpr TypeRecord kTypes[32] = {
    // sizeLimit, tagList, stringCode, name, memorySize, aux, lengthWidth, dataOffset, flags, ref, kind, constraint
    {-1, 0, 0, "ObjectID", kOidSize, 2, 2, kOidData, 0x28, 0, KIND_OBJECT_IDENTIFIER, 0, 0},
    {-1, 2, 0, "QUELT-BOOLEAN", 1, 0, 0, 0, 0x08, 0, KIND_BOOLEAN, 0, 0},
    {-1, 4, 0, "QUELT-INTEGER", 4, 0, 4, 0, 0x08, 0, KIND_INTEGER, 0, 0},
    {-1, 6, 0, "QUELT-BITSTRING", kCountedSize, 0, 4, kCountedData, 0x08, 0, KIND_BIT_STRING, 0, 0},
    {-1, 8, 0, "QUELT-OCTETSTRING", kCountedSize, 0, 4, kCountedData, 0x08, 0, KIND_OCTET_STRING, 0, 0},
    {-1, 10, 0, "QUELT-NULL", 1, 0, 0, 0, 0x08, 0, KIND_NULL, 0, 0},
    {-1, 0, 0, "QUELT-OBJECTIDENTIFIER", kOidSize, 2, 2, kOidData, 0x08, 0, KIND_OBJECT_IDENTIFIER, 0, 0},
    {-1, 12, 0, "QUELT-RELATIVEOID", kOidSize, 2, 2, kOidData, 0x08, 0, KIND_RELATIVE_OID, 0, 0},
    {-1, 14, 0, "QUELT-REAL", 8, 0, 8, 0, 0x08, 0, KIND_REAL, 0, 0},
    {0, 16, 18, "QUELT-NUMERICSTRING", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {0, 18, 19, "QUELT-PRINTABLESTRING", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {0, 20, 20, "QUELT-TELETEXSTRING", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {0, 22, 21, "QUELT-VIDEOTEXSTRING", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {-1, 24, 22, "QUELT-IA5STRING", kCountedSize, 0, 4, kCountedData, 0x08, 0, KIND_COUNTED_TEXT, 0, 0},
    {0, 26, 25, "QUELT-GRAPHICSTRING", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {0, 28, 26, "QUELT-VISIBLESTRING", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {0, 30, 27, "QUELT-GENERALSTRING", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {-1, 32, 28, "QUELT-UNIVERSALSTRING", kCountedSize, 0, 4, kCountedData, 0x08, 0, KIND_UNIVERSAL_TEXT, 0, 0},
    {-1, 34, 30, "QUELT-BMPSTRING", kCountedSize, 0, 4, kCountedData, 0x08, 0, KIND_BMP_TEXT, 0, 0},
    {0, 36, 12, "QUELT-UTF8STRING", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {0, 38, 7, "QUELT-OBJECTDESCRIPTOR", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {-1, 40, 0, "QUELT-UTCTIME", kTimeSize, 0, 0, 0, 0x08, 0, KIND_UTC_TIME, 0, 0},
    {-1, 42, 0, "QUELT-GENTIME", kTimeSize, 0, 0, 0, 0x08, 0, KIND_GENERALIZED_TIME, 0, 0},
    {-1, 4, 0, "QUELT-HUGE-INTEGER", kOidSize, 0, 2, kOidData, 0x08, 0, KIND_HUGE_INTEGER, 0, 0},
    {-1, 44, 14, "QUELT-TIME", 1, 0, 4, 0, 0x09, 0, KIND_TIME_TEXT, 0, 0},
    {-1, 46, 31, "QUELT-DATE", 1, 0, 4, 0, 0x49, 0, KIND_TIME_TEXT, 0, 0},
    {-1, 48, 32, "QUELT-TIME-OF-DAY", 1, 0, 4, 0, 0x49, 0, KIND_TIME_TEXT, 1, 0},
    {-1, 50, 33, "QUELT-DATE-TIME", 1, 0, 4, 0, 0x49, 0, KIND_TIME_TEXT, 2, 0},
    {-1, 52, 34, "QUELT-INTERVAL-DURATION", 1, 0, 4, 0, 0x49, 0, KIND_TIME_TEXT, 3, 0},
    {0, 54, 35, "QUELT-OID-IRI", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {0, 56, 36, "QUELT-RELATIVE-OID-IRI", 1, 0, 4, 0, 0x09, 0, KIND_TEXT, 0, 0},
    {-1, 12, 0, "QorRelativeOID", kOidSize, 2, 2, kOidData, 0x28, 0, KIND_RELATIVE_OID, 0, 0},
};

// The link step of the runtime: what the table needs is plugged into the
// context, and what it doesn't need stays absent.
void initBuiltinTable(RunContext* context)
{
    RunState* state = context->state;
    // The rule map goes in only where no earlier call has put one.
    if (state->linkedRules == 0) {
        state->linkedRules = 0x1;  // BER alone
        state->linkedRuleCount = 1;
    }
    state->hooks.decoderEntry = qorBerDecode;
    state->hooks.encoderEntry = berEncoderPresent;
    state->hooks.constraintEntry = qorCheckConstraints;
    state->hooks.realEntry = decodeReal;
    state->hooks.timeMasks = kTimePropertyMasks;
    state->hooks.timePropertiesEntry = qorCheckTimeProperties;
}

constexpr ControlTable kBuiltinTable = {
    initBuiltinTable, -1, CONTROL_TABLE_VERSION, 0x0915, 30, 32, kPduMap, kTypes, nullptr, nullptr,
    kTagLists,        kConstraints, {0, 0, 0, 0, 0},
};

}  // namespace

const ControlTable* builtinControlTable()
{
    return &kBuiltinTable;
}

const uint32_t* builtinTimePropertyMasks()
{
    return kTimePropertyMasks;
}

const TypeRecord& typeOfPdu(const ControlTable& table, int pdu)
{
    return table.types[table.pduMap[pdu - 1]];
}

const uint16_t* tagsOfType(const ControlTable& table, const TypeRecord& type, int& count)
{
    count = table.tagLists[type.tagListIndex];
    return table.tagLists + type.tagListIndex + 1;
}

uint16_t firstTagOfType(const ControlTable& table, const TypeRecord& type)
{
    int count = 0;
    const uint16_t* tags = tagsOfType(table, type, count);
    // A type without a tag word matches no identifier: 0 is refused as
    // end-of-contents before the comparison.
    return count > 0 ? tags[0] : 0;
}

const uint32_t* timeMasksOfType(const ControlTable& table, const TypeRecord& type, int& count)
{
    const ConstraintRecord& record = table.constraints[type.constraintIndex];
    count = static_cast<int>(record.payload & 0xFFFF);
    return kTimePropertyMasks + (record.payload >> 16);
}

namespace {

// The TIME family shares one kind; the universal tag tells its members apart.
const char* timeTextName(uint32_t stringCode, const char* name)
{
    switch (stringCode) {
        case 14: return "TIME";
        case 31: return "DATE";
        case 32: return "TIME-OF-DAY";
        case 33: return "DATE-TIME";
        case 34: return "DURATION";
        default: return name;
    }
}

}  // namespace

const char* errorNameOfType(const TypeRecord& type)
{
    if ((type.typeFlags & TF_GENERIC_NAME) == 0) return type.name;
    switch (type.kind) {
        case KIND_INTEGER: case KIND_HUGE_INTEGER: return "INTEGER";
        case KIND_BIT_STRING: return "BIT STRING";
        case KIND_NULL: return "NULL";
        case KIND_REAL: return "REAL";
        case KIND_BOOLEAN: return "BOOLEAN";
        case KIND_OCTET_STRING: return "OCTET STRING";
        case KIND_TEXT: case KIND_COUNTED_TEXT: return "Character String";
        case KIND_UTC_TIME: return "UTCTime";
        case KIND_GENERALIZED_TIME: return "GeneralizedTime";
        case KIND_BMP_TEXT: return "BMPString";
        case KIND_UNIVERSAL_TEXT: return "UniversalString";
        case KIND_OBJECT_IDENTIFIER: return "OBJECT IDENTIFIER";
        case KIND_RELATIVE_OID: return "RELATIVE-OID";
        case KIND_TIME_TEXT: return timeTextName(type.stringCode, type.name);
        default: return type.name;
    }
}

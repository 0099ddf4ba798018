// The constant description of the built-in types that the decoder walks:
// a head, a map from PDU numbers to type records, the type records, their
// tags and their constraint records.
#pragma once

#include <cstdint>

struct RunContext;

// Kinds of type record: each names the decoder routine.
enum TypeKind : uint32_t {
    KIND_INTEGER = 0,
    KIND_BIT_STRING = 3,
    KIND_NULL = 5,
    KIND_REAL = 7,
    KIND_BOOLEAN = 8,
    KIND_OCTET_STRING = 0x14,
    KIND_TEXT = 0x18,
    KIND_COUNTED_TEXT = 0x19,
    KIND_UTC_TIME = 0x1d,
    KIND_GENERALIZED_TIME = 0x1e,
    KIND_BMP_TEXT = 0x35,
    KIND_UNIVERSAL_TEXT = 0x36,
    KIND_HUGE_INTEGER = 0x3e,
    KIND_OBJECT_IDENTIFIER = 0x3f,
    KIND_RELATIVE_OID = 0x4a,
    KIND_TIME_TEXT = 0x4e,
};

// Bits of TypeRecord::typeFlags.
constexpr uint16_t TF_INDIRECT = 0x0001;      // the slot holds a pointer to the value
constexpr uint16_t TF_GENERIC_NAME = 0x0020;  // error texts name the kind
constexpr uint16_t TF_CONSTRAINED = 0x0040;   // constraint records follow

// Bits of ControlTable::flags.
constexpr uint16_t TABLE_HAS_CONSTRAINTS = 0x0010;

constexpr uint8_t CK_TIME_PROPERTIES = 0x1a;
constexpr uint16_t NO_PDU = 0xffff;

struct TypeRecord {
    int32_t sizeLimit;
    uint32_t tagListIndex;
    uint32_t stringCode;  // universal tag of a character or time string type
    const char* name;
    uint32_t memorySize;
    uint32_t auxCount;
    uint16_t lengthWidth;
    uint16_t dataOffset;
    uint16_t typeFlags;
    uint16_t refIndex;
    uint32_t kind;
    uint16_t constraintIndex;
    uint16_t reserved;
};

struct ConstraintRecord {
    uint8_t combination;
    uint8_t constraintKind;
    uint16_t reserved;
    uint32_t payload;  // time properties: first mask index << 16 | mask count
};

struct ControlTable {
    void (*initFn)(RunContext* context);
    int32_t tagSearchIndex;
    uint16_t version;  // must be 15
    uint16_t flags;
    uint16_t pduCount;
    uint16_t typeCount;
    const uint16_t* pduMap;
    const TypeRecord* types;
    const void* components;
    const void* alphabets;
    const uint16_t* tagLists;
    const ConstraintRecord* constraints;
    uint32_t reserved[5];
};

// The type record of a PDU number whose range the caller has checked.
const TypeRecord& typeOfPdu(const ControlTable& table, int pdu);
// The tag words of a type, and their count.
const uint16_t* tagsOfType(const ControlTable& table, const TypeRecord& type, int& count);
// The first tag word of a type: class in the top two bits, number below.
uint16_t firstTagOfType(const ControlTable& table, const TypeRecord& type);
// The time property masks of a constrained type, and their count.
const uint32_t* timeMasksOfType(const ControlTable& table, const TypeRecord& type, int& count);
// The name that error texts use for a type.
const char* errorNameOfType(const TypeRecord& type);

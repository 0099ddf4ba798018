#include "decoder/kinds.h"

#include "decoder/control_table.h"
#include "decoder/errors.h"
#include "decoder/primitive.h"
#include "decoder/strings.h"
#include "decoder/times.h"
#include "decoder/values.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"

namespace {

// A kind that no table of this program should carry.
uint32_t unknownKind(DecodeCall& call, int32_t, int32_t&, bool)
{
    reportError(call.context, RT_CANNOT_HAPPEN, 4);
}

uint32_t realThroughEntry(DecodeCall& call, int32_t length, int32_t&, bool constructed)
{
    RealEntry entry = call.context->state->hooks.realEntry;
    if (entry == nullptr) reportError(call.context, RT_REAL_NOT_LINKED);
    return entry(call, length, constructed);
}

}  // namespace

KindRoutine kindRoutine(RunContext*, uint32_t kind)
{
    switch (kind) {
        case KIND_BOOLEAN:
        case KIND_NULL:
        case KIND_INTEGER:
            return decodeSimple;
        case KIND_REAL:
            return realThroughEntry;
        case KIND_BIT_STRING:
        case KIND_OCTET_STRING:
        case KIND_COUNTED_TEXT:
        case KIND_BMP_TEXT:
        case KIND_UNIVERSAL_TEXT:
        case KIND_HUGE_INTEGER:
        case KIND_OBJECT_IDENTIFIER:
        case KIND_RELATIVE_OID:
            return decodeCounted;
        case KIND_TEXT:
        case KIND_TIME_TEXT:
            return decodeText;
        case KIND_UTC_TIME:
        case KIND_GENERALIZED_TIME:
            return decodeTimeRecord;
        default:
            return unknownKind;
    }
}

uint32_t valueSlotSize(const TypeRecord& type)
{
    switch (type.kind) {
        case KIND_BOOLEAN: case KIND_NULL: return 1;
        case KIND_INTEGER: return sizeof(int32_t);
        case KIND_REAL: return sizeof(double);
        case KIND_UTC_TIME: case KIND_GENERALIZED_TIME: return sizeof(TimeRecord);
        case KIND_HUGE_INTEGER: case KIND_OBJECT_IDENTIFIER: case KIND_RELATIVE_OID: return sizeof(EncodedOid);
        default: return sizeof(CountedValue);
    }
}

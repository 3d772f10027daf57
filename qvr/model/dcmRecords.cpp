// The passive records: protocol, worklist entry, equipment. Each holds the record it was made from, taken over as a
// whole or not at all.
#include <iterator>
#include <utility>

#include "qvr/model/dcmEquipment.h"
#include "qvr/model/dcmProtocol.h"
#include "qvr/model/dcmWorklist.h"
#include "qvr/model/detail/assign.h"

dcmProtocol::dcmProtocol() {
    m_Values.ProtocolIndex = -1;
    m_Values.BodySize = 2;
    m_Values.Grid = 1;
}

dcmProtocol::dcmProtocol(const QVR_ST_PROTOCOL* record) : dcmProtocol() {
    if (record) qvr::assignWhole(m_Values, *record);
}

dcmProtocol::dcmProtocol(QVR_ST_PROTOCOL&& values) noexcept : m_Values(std::move(values)) {}
dcmProtocol::dcmProtocol(const dcmProtocol& other) : dcmProtocol(&other.m_Values) {}
dcmProtocol::~dcmProtocol() = default;

dcmProtocol& dcmProtocol::operator=(const dcmProtocol& other) {
    qvr::assignWhole(m_Values, other.m_Values);
    return *this;
}

dcmWorklist::dcmWorklist() {
    m_Values.WorklistIndex = -1;
    m_Values.Status = -1;
    m_Values.PatientBirthDate = COleDateTime::GetCurrentTime();
}

dcmWorklist::~dcmWorklist() = default;

int dcmWorklist::Create(const QVR_ST_WORKLIST* record) {
    return record && qvr::assignWhole(m_Values, *record) ? 1 : 0;
}

void dcmWorklist::SetReqProcCode(const char* value, const char* meaning, const char* designator,
                                 const char* version) {
    m_ReqProcCode.assign(value, meaning, designator, version);
}

void dcmWorklist::AddSPSCode(const char* value, const char* meaning, const char* designator,
                             const char* version) {
    qvr::guarded([&] {
        if (!m_SPSCodes.emplace_back().assign(value, meaning, designator, version)) m_SPSCodes.pop_back();
    });
}

int dcmWorklist::GetSPSCode(int index, dcmCode& out) const {
    if (index < 0 || index >= GetSPSCodeCount()) return 0;
    const dcmCode& code = *std::next(m_SPSCodes.begin(), index);
    return out.assign(code.m_CodeValue, code.m_CodeMeaning, code.m_CodingSchemeDesignator,
                      code.m_CodingSchemeVersion)
               ? 1
               : 0;
}

dcmEquipment::dcmEquipment() = default;
dcmEquipment::~dcmEquipment() = default;
dcmEquipment::dcmEquipment(const dcmEquipment& other) : dcmObject(other) {
    qvr::assignWhole(m_Values, other.m_Values);
}

dcmEquipment& dcmEquipment::operator=(const dcmEquipment& other) {
    qvr::assignWhole(m_Values, other.m_Values);
    return *this;
}

int dcmEquipment::Create(const QVR_ST_EQUIPMENT* record) {
    return record && qvr::assignWhole(m_Values, *record) ? 1 : 0;
}

// dcmEquipment: the acquisition equipment. A passive record: nothing is checked.
#pragma once

#include "qvr/export.h"
#include "qvr/model/dcmObject.h"
#include "qvr/platform/CString.h"

/// What a host fills for dcmEquipment::Create; zero and empty with {}.
struct QVR_ST_EQUIPMENT {
    CString Manufacturer{};
    CString InstitutionName{};
    CString InstitutionAddress{};
    CString StationName{};
    CString ManufacturerModelName{};
    CString DeviceSerialNumber{};  ///< as text
    CString SoftwareVersion{};
    int DeviceNumber = 0;
    int SerialNumber = 0;
};

class QVR_API dcmEquipment : public dcmObject {
public:
    dcmEquipment();
    dcmEquipment(const dcmEquipment&);
    dcmEquipment& operator=(const dcmEquipment& other);
    ~dcmEquipment() override;

    /// Takes all values of the record. @return 1; 0, with nothing changed, for null or when memory ends
    int Create(const QVR_ST_EQUIPMENT* record);

    const char* GetManufacturer() const { return m_Values.Manufacturer; }
    const char* GetInstitutionName() const { return m_Values.InstitutionName; }
    const char* GetInstitutionAddress() const { return m_Values.InstitutionAddress; }
    const char* GetStationName() const { return m_Values.StationName; }
    const char* GetManufacturerModelName() const { return m_Values.ManufacturerModelName; }
    const char* GetDeviceSerialNumber() const { return m_Values.DeviceSerialNumber; }
    const char* GetSoftwareVersion() const { return m_Values.SoftwareVersion; }
    int GetDeviceNumber() const { return m_Values.DeviceNumber; }
    int GetSerialNumber() const { return m_Values.SerialNumber; }

private:
    QVR_ST_EQUIPMENT m_Values;  // the members are those of the record, so that no copy can mix two of them up
};

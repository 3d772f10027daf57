// dcmProtocol: the acquisition protocol of one series. A passive record: nothing is checked or computed.
#pragma once

#include <cstdint>

#include "qvr/export.h"
#include "qvr/model/dcmObject.h"
#include "qvr/platform/CString.h"

/// What a host fills for dcmProtocol; zero and empty with {}. An int flag is false at 0 and true otherwise and is kept
/// as given; the codes belong to the host.
struct QVR_ST_PROTOCOL {
    CString RelatedCodeValue{};
    CString RelatedCodeMeaning{};
    CString RelatedCodingDesignator{};
    CString RelatedCodingVersion{};
    CString RelatedProcName{};
    CString RelatedProcDesc{};
    std::int32_t ProtocolIndex = 0;
    CString AnatomyName{};     ///< body part
    CString ProjectionName{};  ///< view
    int HMirror = 0;           ///< flag
    int VMirror = 0;           ///< flag
    std::int32_t RotateSetting = 0;
    int Invert = 0;           ///< flag
    int AutoEnhancement = 0;  ///< flag
    int Default = 0;          ///< flag
    std::int32_t Receptor = 0;
    std::int32_t BodySize = 0;
    std::int32_t Grid = 0;
    double KVP = 0.0;  ///< tube voltage, kV (peak)
    double MA = 0.0;   ///< tube current, mA
    double MAS = 0.0;  ///< current-time product, mAs
    double MS = 0.0;   ///< exposure time, ms
    std::int32_t FocalSpot = 0;
    int AECOn = 0;  ///< flag
    int AEC0 = 0;   ///< flag
    int AEC1 = 0;   ///< flag
    int AEC2 = 0;   ///< flag
    int AEC3 = 0;   ///< flag
    int AEC4 = 0;   ///< flag
    std::int32_t AECDensity = 0;
    std::int32_t AECSensitivity = 0;
    std::int32_t IPParam0 = 0;
    std::int32_t IPParam1 = 0;
    std::int32_t IPParam2 = 0;
    std::int32_t IPParam3 = 0;
    std::int32_t IPParam4 = 0;
    std::int32_t IPParam5 = 0;
    std::int32_t IPParam6 = 0;
    std::int32_t IPParam7 = 0;
    std::int32_t IPParam8 = 0;
    int DefaultParam = 0;     ///< flag
    CString ThumbFilePath{};  ///< bitmap file that the series shows while it has no image
};

class QVR_API dcmProtocol : public dcmObject {
public:
    /// Zero and empty, but for ProtocolIndex -1, BodySize 2 and Grid 1.
    dcmProtocol();
    /// Copies all values; those of the default constructor for null, or when memory ends.
    explicit dcmProtocol(const QVR_ST_PROTOCOL* record);
    dcmProtocol(const dcmProtocol&);
    dcmProtocol& operator=(const dcmProtocol& other);
    ~dcmProtocol() override;

    const char* GetRelatedCodeValue() const { return m_Values.RelatedCodeValue; }
    const char* GetRelatedCodeMeaning() const { return m_Values.RelatedCodeMeaning; }
    const char* GetRelatedCodingDesignator() const { return m_Values.RelatedCodingDesignator; }
    const char* GetRelatedCodingVersion() const { return m_Values.RelatedCodingVersion; }
    const char* GetRelatedProcName() const { return m_Values.RelatedProcName; }
    const char* GetRelatedProcDesc() const { return m_Values.RelatedProcDesc; }
    std::int32_t GetProtocolIndex() const { return m_Values.ProtocolIndex; }
    const char* GetAnatomyName() const { return m_Values.AnatomyName; }
    const char* GetProjectionName() const { return m_Values.ProjectionName; }
    int IsHMirror() const { return m_Values.HMirror; }
    int IsVMirror() const { return m_Values.VMirror; }
    std::int32_t GetRotateSetting() const { return m_Values.RotateSetting; }
    int IsInvert() const { return m_Values.Invert; }
    int IsAutoEnhancement() const { return m_Values.AutoEnhancement; }
    int IsDefault() const { return m_Values.Default; }
    std::int32_t GetReceptor() const { return m_Values.Receptor; }
    void SetReceptor(std::int32_t receptor) { m_Values.Receptor = receptor; }
    std::int32_t GetBodySize() const { return m_Values.BodySize; }
    void SetBodySize(std::int32_t size) { m_Values.BodySize = size; }
    std::int32_t GetGrid() const { return m_Values.Grid; }
    void SetGrid(std::int32_t grid) { m_Values.Grid = grid; }
    double GetKVP() const { return m_Values.KVP; }
    void SetKVP(double kiloVolts) { m_Values.KVP = kiloVolts; }
    double GetMA() const { return m_Values.MA; }
    void SetMA(double milliAmperes) { m_Values.MA = milliAmperes; }
    double GetMAS() const { return m_Values.MAS; }
    void SetMAS(double milliAmpereSeconds) { m_Values.MAS = milliAmpereSeconds; }
    double GetMS() const { return m_Values.MS; }
    void SetMS(double milliSeconds) { m_Values.MS = milliSeconds; }
    std::int32_t GetFocalSpot() const { return m_Values.FocalSpot; }
    int IsAECOn() const { return m_Values.AECOn; }
    void SetAECOn(int on) { m_Values.AECOn = on; }
    int IsAEC0() const { return m_Values.AEC0; }
    void SetAEC0(int on) { m_Values.AEC0 = on; }
    int IsAEC1() const { return m_Values.AEC1; }
    void SetAEC1(int on) { m_Values.AEC1 = on; }
    int IsAEC2() const { return m_Values.AEC2; }
    void SetAEC2(int on) { m_Values.AEC2 = on; }
    int IsAEC3() const { return m_Values.AEC3; }
    void SetAEC3(int on) { m_Values.AEC3 = on; }
    int IsAEC4() const { return m_Values.AEC4; }
    void SetAEC4(int on) { m_Values.AEC4 = on; }
    std::int32_t GetAECDensity() const { return m_Values.AECDensity; }
    void SetAECDensity(std::int32_t density) { m_Values.AECDensity = density; }
    std::int32_t GetAECSensitivity() const { return m_Values.AECSensitivity; }
    std::int32_t GetIPParam0() const { return m_Values.IPParam0; }
    void SetIPParam0(std::int32_t value) { m_Values.IPParam0 = value; }
    std::int32_t GetIPParam1() const { return m_Values.IPParam1; }
    void SetIPParam1(std::int32_t value) { m_Values.IPParam1 = value; }
    std::int32_t GetIPParam2() const { return m_Values.IPParam2; }
    void SetIPParam2(std::int32_t value) { m_Values.IPParam2 = value; }
    std::int32_t GetIPParam3() const { return m_Values.IPParam3; }
    void SetIPParam3(std::int32_t value) { m_Values.IPParam3 = value; }
    std::int32_t GetIPParam4() const { return m_Values.IPParam4; }
    void SetIPParam4(std::int32_t value) { m_Values.IPParam4 = value; }
    std::int32_t GetIPParam5() const { return m_Values.IPParam5; }
    void SetIPParam5(std::int32_t value) { m_Values.IPParam5 = value; }
    std::int32_t GetIPParam6() const { return m_Values.IPParam6; }
    void SetIPParam6(std::int32_t value) { m_Values.IPParam6 = value; }
    std::int32_t GetIPParam7() const { return m_Values.IPParam7; }
    void SetIPParam7(std::int32_t value) { m_Values.IPParam7 = value; }
    std::int32_t GetIPParam8() const { return m_Values.IPParam8; }
    void SetIPParam8(std::int32_t value) { m_Values.IPParam8 = value; }
    int IsDefaultParam() const { return m_Values.DefaultParam; }
    void SetDefaultParam(int on) { m_Values.DefaultParam = on; }
    const char* GetThumbFilePath() const { return m_Values.ThumbFilePath; }

private:
    friend class dcmSeries;
    explicit dcmProtocol(QVR_ST_PROTOCOL&& values) noexcept;

    // The members are those of the record, so that no copy can mix two of them up.
    QVR_ST_PROTOCOL m_Values;
};

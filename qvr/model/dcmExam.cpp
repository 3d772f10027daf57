// dcmExam: positions become studies and series, and images enter and leave the list of resident ones.
#include "qvr/model/dcmExam.h"

#include <algorithm>
#include <functional>
#include <span>
#include <utility>

#include "qvr/image/detail/displayFit.h"
#include "qvr/image/rawImage.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/memory.h"
#include "qvr/platform/detail/numbers.h"

namespace {

template <class Object>
Object* at(const std::vector<std::unique_ptr<Object>>& list, int position) {
    return position >= 0 && position < static_cast<int>(list.size())
               ? list[static_cast<std::size_t>(position)].get()
               : nullptr;
}

// Appends a created object; it is destroyed when there is no memory for its place.
template <class Object>
Object* keep(std::vector<std::unique_ptr<Object>>& list, std::unique_ptr<Object> object) {
    list.push_back(std::move(object));
    return list.back().get();
}

// The pixels that a series has in memory, or none.
std::span<const std::uint16_t> pixelsOf(const dcmSeries* series) {
    dcmImage* const image = series ? series->GetDcmImage() : nullptr;
    const rawImage* const raw = image ? image->GetRawImage() : nullptr;
    if (!raw || !raw->GetPixelData()) return {};
    return {raw->GetPixelData(), qvr::pixelCount(raw->GetWidth(), raw->GetHeight()).value_or(0)};
}

bool liesIn(std::span<const std::uint16_t> pixels, const std::uint16_t* address) {
    const std::less<const std::uint16_t*> before;
    return !before(address, pixels.data()) && before(address, pixels.data() + pixels.size());
}

}  // namespace

dcmExam::dcmExam() = default;

dcmExam::~dcmExam() {
    for (auto& study : m_Studies) study.reset();
    m_Studies.clear();
    for (auto& entry : m_Worklists) entry.reset();
}

dcmStudy* dcmExam::CreateStudy(const QVR_ST_STUDY* record, dcmStudy::Modality modality) {
    return qvr::guarded<dcmStudy*>(nullptr, [&]() -> dcmStudy* {
        auto study = std::make_unique<dcmStudy>();
        return study->Create(record, modality) ? keep(m_Studies, std::move(study)) : nullptr;
    });
}

dcmStudy* dcmExam::GetStudy(int position) const {
    return at(m_Studies, position);
}

dcmWorklist* dcmExam::CreateWorklist(const QVR_ST_WORKLIST* record) {
    return qvr::guarded<dcmWorklist*>(nullptr, [&]() -> dcmWorklist* {
        auto entry = std::make_unique<dcmWorklist>();
        return entry->Create(record) ? keep(m_Worklists, std::move(entry)) : nullptr;
    });
}

dcmWorklist* dcmExam::GetWorklist(int position) const {
    return at(m_Worklists, position);
}

dcmSeries* dcmExam::find(int study, int series) const {
    const dcmStudy* const parent = GetStudy(study);
    return parent ? parent->GetSeries(series) : nullptr;
}

dcmSeries* dcmExam::CreateSeries(int study, const QVR_ST_SERIES* record) {
    dcmStudy* const parent = GetStudy(study);
    return parent ? parent->CreateSeries(record) : nullptr;
}

dcmProtocol* dcmExam::CreateProtocol(int study, int series, const QVR_ST_PROTOCOL* record) {
    dcmSeries* const target = find(study, series);
    return target && target->CreateProtocol(record) ? target->GetProtocol() : nullptr;
}

dcmImage* dcmExam::CreateImage(int study, int series, const QVR_ST_IMAGE* record, const char* directory,
                               const RECT* rectangle, CDC* surface) {
    dcmSeries* const target = find(study, series);
    if (!target || !record || !directory || !rectangle) return nullptr;
    return qvr::guarded<dcmImage*>(nullptr, [&]() -> dcmImage* {
        m_SeriesInRAM.reserveOne();
        QVR_ST_IMAGE apart;
        qvr::Pixels pixels;
        // A host may acquire anew what an image holds: its pixels must not leave memory before they are copied.
        if (m_SeriesInRAM.isFull() && liesIn(pixelsOf(m_SeriesInRAM.newest()), record->PixelData)) {
            apart = *record;
            pixels = qvr::copyPixels(record->Width, record->Height, record->PixelData);
            if (!pixels) return nullptr;
            apart.PixelData = pixels.get();
            record = &apart;
        }
        m_SeriesInRAM.makeRoomFromNewest();
        if (!target->CreateImage(record, directory, rectangle, surface)) return nullptr;
        m_SeriesInRAM.append(target);
        return target->GetDcmImage();
    });
}

dcmImage* dcmExam::OpenImage(int study, int series, const QVR_ST_IMAGE* record, const RECT* rectangle,
                             CDC* surface) {
    dcmSeries* const target = find(study, series);
    if (!target || !record) return nullptr;
    return qvr::guarded<dcmImage*>(nullptr, [&]() -> dcmImage* {
        m_SeriesInRAM.reserveOne();
        if (!target->OpenImage(record)) return nullptr;
        if (!qvr::hasRoom(rectangle)) return target->GetDcmImage();
        m_SeriesInRAM.makeRoomFromNewest();
        if (target->ReadImageInRAM(rectangle, surface)) m_SeriesInRAM.append(target);
        return target->GetDcmImage();
    });
}

int dcmExam::ActivateImage(int study, int series, const RECT* rectangle, CDC* surface) {
    dcmSeries* const target = find(study, series);
    if (!target) return 0;
    if (!target->IsImageExist() || target->IsImageInRAM()) return 1;
    if (!qvr::hasRoom(rectangle)) return 0;  // the read would fail: nothing is written out for it
    return qvr::guarded(0, [&] {
        m_SeriesInRAM.reserveOne();
        if (!m_SeriesInRAM.makeRoomFromOldest()) return 0;
        if (!target->ReadImageInRAM(rectangle, surface)) return 0;
        m_SeriesInRAM.append(target);
        return 1;
    });
}

void dcmExam::DrawImage(int study, int series, const RECT* rectangle, CDC* surface) {
    if (dcmStudy* const parent = GetStudy(study)) parent->DrawImage(series, rectangle, surface);
}

int dcmExam::RejectImage(int study, int series) {
    dcmSeries* const target = find(study, series);
    if (!target) return 0;
    m_SeriesInRAM.remove(target);
    return target->RejectImage() ? 1 : 0;
}

void dcmExam::SetLUT(int study, int type, int k, int c) {
    if (dcmStudy* const parent = GetStudy(study)) parent->SetLUT(type, k, c);
}

dcmSeries* dcmExam::GetSeriesInRAM(int position) const {
    return m_SeriesInRAM.at(position);
}
int dcmExam::GetSeriesInRAMCount() const {
    return m_SeriesInRAM.count();
}
int dcmExam::IsRAMFull() const {
    return m_SeriesInRAM.isFull() ? 1 : 0;
}

int dcmExam::ReadSeriesInRAM(dcmSeries* series, const RECT* rectangle, CDC* surface) {
    if (!series) return 0;
    return qvr::guarded(0, [&] {
        m_SeriesInRAM.reserveOne();
        if (!series->ReadImageInRAM(rectangle, surface)) return 0;
        m_SeriesInRAM.append(series);
        return 1;
    });
}

int dcmExam::WriteSeriesToHDD(dcmSeries* series) {
    if (!m_SeriesInRAM.contains(series) || !series->WriteImageToHDD()) return 0;
    m_SeriesInRAM.remove(series);
    return 1;
}

void dcmExam::UpdateImageInRAM(const RECT* rectangle, CDC* surface) {
    // By position: a surface may call back and change the list. What it appends meanwhile has its display already.
    const int counted = m_SeriesInRAM.count();
    for (int position = 0; position < std::min(counted, m_SeriesInRAM.count()); ++position)
        m_SeriesInRAM.at(position)->UpdateImage(rectangle, surface, 1);
}

// The series whose images an exam made resident.
#include "qvr/model/residentSeries.h"

#include <algorithm>

#include "qvr/model/dcmSeries.h"

namespace qvr {

bool ResidentSeries::contains(const dcmSeries* series) const {
    return std::find(m_series.begin(), m_series.end(), series) != m_series.end();
}

dcmSeries* ResidentSeries::at(int position) const {
    return position >= 0 && position < count() ? m_series[static_cast<std::size_t>(position)] : nullptr;
}

void ResidentSeries::remove(const dcmSeries* series) {
    std::erase(m_series, series);
}

void ResidentSeries::makeRoomFromNewest() {
    if (!isFull()) return;
    m_series.back()->WriteImageToHDD();
    m_series.pop_back();
}

bool ResidentSeries::makeRoomFromOldest() {
    if (!isFull()) return true;
    if (!m_series.front()->WriteImageToHDD()) return false;
    m_series.erase(m_series.begin());
    return true;
}

}  // namespace qvr

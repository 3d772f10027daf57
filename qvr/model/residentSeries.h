// The series whose images an exam made resident, oldest first: who leaves memory, and when.
#pragma once

#include <vector>

class dcmSeries;

namespace qvr {

inline constexpr int kMaxResidentSeries = 5;

/// A list of addresses. An entry may be out of date (written out behind the list's back), so membership is by address
/// and an entry is only asked to write itself out, which a series that is not resident refuses.
class ResidentSeries {
public:
    int count() const { return static_cast<int>(m_series.size()); }
    bool isFull() const { return count() >= kMaxResidentSeries; }
    bool contains(const dcmSeries* series) const;
    dcmSeries* at(int position) const;

    /// Makes sure that the next append cannot fail. Throws when there is no memory.
    void reserveOne() { m_series.reserve(m_series.size() + 1); }
    dcmSeries* newest() const { return at(count() - 1); }
    void append(dcmSeries* series) { m_series.push_back(series); }
    void remove(const dcmSeries* series);

    // Making room. A new exposure must never wait: it takes the place of the newest, whose write is not looked at, so
    // that a failed one leaves that series resident but uncounted. Looking at an older image can wait: it takes the
    // place of the oldest, and only once that is safe on disk.

    /// When full: writes the newest out and drops it from the list, written or not.
    void makeRoomFromNewest();
    /// When full: writes the oldest out and drops it. @return false, with the list as it was, when it cannot be written
    [[nodiscard]] bool makeRoomFromOldest();

private:
    std::vector<dcmSeries*> m_series;
};

}  // namespace qvr

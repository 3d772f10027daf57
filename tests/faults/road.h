// The road of an examination, walked with small images: everything a console does from the worklist entry to the export,
// and the check that no acquired image was lost on the way.
#pragma once

#include <qvr/qvr.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace road {

inline constexpr int kWidth = 48;
inline constexpr int kHeight = 36;
inline constexpr int kNewImages = 7;  // more than stay in memory

/// Pixels that no other image has; every generation of an image's pixels has a number of its own.
std::vector<std::uint16_t> pixelsOf(int generation);

/// One image on the road, by what its pixels may be now.
struct Exposure {
    int study = 0;
    int series = 0;
    std::string name;
    int acquired = 0;          ///< generation of the pixels as acquired
    std::vector<int> current;  ///< generations that may be the present ones: two after an update that failed
    bool safe = false;         ///< CreateImage (or OpenImage) said that the library has it
    bool rejected = false;
};

/// What a walk says while it goes, readable by another process after a kill: one entry per acquired generation.
struct Progress {
    enum State : int { unknown = 0, safe = 1, removing = 2 };
    int state[64] = {};
};

/// Where a walk keeps its files, and what it has done so far.
class Walk {
public:
    /// @param folder  an existing, empty folder
    /// @param progress  may be null
    explicit Walk(std::string folder, Progress* progress = nullptr);
    ~Walk();

    /// Walks the road. No step's failure ends it: a console goes on.
    void run();
    /// What is wrong now, a line each; empty when all is well.
    std::string complaints() const;
    /// Temporary files that are still there, a line each.
    std::string leftBehind() const;
    /// Images that the library said it has.
    int safeImages() const;
    /// Ends the examination, as a console does at the end of the day.
    void end();

private:
    void plan();
    void acquire(int index);
    void openStored();
    void look();
    void edit();
    void mark();
    void undo();
    void leaveAndReturn();
    void exportImages();
    void rejectOne();
    void standalone();
    dcmSeries* seriesOf(const Exposure& exposure) const;
    rawImage* rawOf(const Exposure& exposure) const;
    void checkEntity(const Exposure& exposure, std::string& complaints) const;

    std::string m_folder;
    Progress* m_progress;
    std::vector<std::uint16_t> m_pixels;
    CRasterDC m_surface;
    RECT m_rectangle{0, 0, 96, 80};
    std::vector<Exposure> m_exposures;
    std::unique_ptr<dcmExam> m_exam;
};

/// Whether a file holds an image of that generation, marks burned in or not; also a shorter piece of it when
/// `prefixAllowed`.
bool holds(const std::string& path, int generation, bool prefixAllowed = false);
/// Every regular file below a folder.
std::vector<std::string> filesBelow(const std::string& folder);
/// After a kill: what is wrong with the files of a walk, a line each. Each is absent, or whole, or the beginning of one
/// generation; an image whose raw copy was finished is whole somewhere.
std::string complaintsAfterKill(const std::string& folder, const Progress& progress);

}  // namespace road

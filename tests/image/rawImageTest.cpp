// rawImage: life, residency, files. Pixels may be lost in no failure, and no picture may be taken for another.
#include "qvr/image/rawImage.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <optional>

#include "qvr/image/QVR_COMP.h"
#include "support/fileSizeLimit.h"
#include "support/pictures.h"
#include "support/recordingDC.h"
#include "support/refuseAllocation.h"
#include "support/temporaryFolder.h"

namespace {

namespace fs = std::filesystem;
constexpr int kWidth = 37, kHeight = 23;
constexpr RECT kScreen{0, 0, 80, 60};

// Everything that a failed operation must leave alone.
struct State {
    explicit State(const rawImage& i)
        : values{i.GetWidth(),
                 i.GetHeight(),
                 i.GetBAKWidth(),
                 i.GetBAKHeight(),
                 i.GetBitsStored(),
                 i.GetHighBit(),
                 i.GetPixelSpacing(),
                 i.GetWindowWidth(),
                 i.GetWindowCenter(),
                 i.GetInitialWindowWidth(),
                 i.GetInitialWindowCenter(),
                 i.GetXOffset(),
                 i.GetYOffset(),
                 i.IsReadInRAM(),
                 i.IsBAKFileValid()},
          ratios{i.GetXRatio(), i.GetYRatio()},
          paths{i.GetFilePath(), i.GetBAKFilePath()},
          bitmap(i.GetDIB()),
          buffer(i.GetPixelData()) {
        if (buffer) pixels.assign(buffer, buffer + i.GetWidth() * i.GetHeight());
    }
    friend bool operator==(const State&, const State&) = default;
    std::vector<int> values;
    std::vector<float> ratios;
    std::vector<std::string> paths;
    const CDib* bitmap;
    const std::uint16_t* buffer;
    std::vector<std::uint16_t> pixels;
};

class RawImageTest : public testing::Test {
protected:
    // A new image with its raw copy and bitmap.
    void acquire() {
        const auto record = newRecord(kWidth, kHeight, m_pixels);
        ASSERT_EQ(m_image.Create(&record), 1);
        ASSERT_EQ(m_image.CreateBAKFile("1.2.3", m_folder.path().c_str()), 1);
        ASSERT_EQ(m_image.ValidateFile(), 1);
        ASSERT_EQ(m_image.BuildDisplayImage(&kScreen, &m_surface, 1), 1);
    }
    // The record of an image whose files hold m_pixels, with a raw copy of other pixels.
    QVR_ST_RAW_IMAGE storedRecord() {
        auto record = newRecord(kWidth, kHeight, m_pixels);
        record.Mode = 1;
        record.PixelData = nullptr;
        record.FilePath = m_folder.file("image.raw", m_pixels).c_str();
        record.BAKFilePath = m_folder.file("copy.raw", ramp(kWidth, kHeight, 5)).c_str();
        record.WorkFilePath = (m_folder / "work.raw").c_str();
        return record;
    }
    void open(const QVR_ST_RAW_IMAGE& record) { ASSERT_EQ(m_image.Open(&record), 1); }
    testing::AssertionResult holds(const std::vector<std::uint16_t>& pixels) {
        if (!m_image.GetPixelData()) return testing::AssertionFailure() << "no pixels";
        return samePicture(pixels, m_image.GetPixelData(), m_image.GetWidth(), m_image.GetHeight());
    }

    TemporaryFolder m_folder;
    RecordingDC m_surface;
    const std::vector<std::uint16_t> m_pixels = ramp(kWidth, kHeight);
    rawImage m_image;
};

// --- create, open -------------------------------------------------------------------------------------------------

TEST_F(RawImageTest, CreateCopiesTheRecordAndItsPixels) {
    auto record = newRecord(kWidth, kHeight, m_pixels, 300, 200);
    record.BAKWidth = 5;
    record.BAKHeight = 6;
    EXPECT_EQ(m_image.Create(&record), 1);
    EXPECT_TRUE(holds(m_pixels));
    EXPECT_NE(m_image.GetPixelData(), m_pixels.data());
    EXPECT_EQ(State(m_image).values,
              (std::vector{kWidth, kHeight, 5, 6, 14, 13, 143, 300, 200, 300, 200, 0, 0, 1, 0}));
}

struct Window {
    const char* name;
    int bits, width, center;
    std::vector<std::uint16_t> pixels;
    int expectedWidth, expectedCenter;
};

std::vector<std::uint16_t> halves(std::uint16_t low, std::uint16_t high) {
    std::vector<std::uint16_t> pixels(120, low);
    std::fill(pixels.begin() + 60, pixels.end(), high);
    return pixels;
}

TEST(WindowTest, IsTheGivenOneOrAutomatic) {
    const Window rows[] = {{"given", 14, 300, 200, halves(100, 150), 300, 200},
                           {"negativeIsGiven", 14, -300, -1, halves(100, 150), -300, -1},
                           {"centreAlone", 14, 0, 9, halves(100, 150), 51, 125},
                           {"tooNarrow", 14, 0, 0, halves(100, 140), 16384, 8192},
                           {"noBounds", 13, 0, 0, halves(100, 150), 16384, 8191},
                           {"twelveBits", 12, 0, 0, halves(100, 150), 4096, 2047}};
    for (const Window& row : rows) {
        SCOPED_TRACE(row.name);
        auto record = newRecord(12, 10, row.pixels, row.width, row.center);
        record.BitsStored = row.bits;
        rawImage image;
        ASSERT_EQ(image.Create(&record), 1);
        EXPECT_EQ(image.GetWindowWidth(), row.expectedWidth);
        EXPECT_EQ(image.GetWindowCenter(), row.expectedCenter);
        EXPECT_EQ(image.GetInitialWindowWidth(), row.expectedWidth);
        EXPECT_EQ(image.GetInitialWindowCenter(), row.expectedCenter);
        EXPECT_EQ(image.Update(12, 10, row.pixels.data(), row.bits, 13, row.width, row.center), 1);
        EXPECT_EQ(image.GetInitialWindowWidth(), row.expectedWidth);
        EXPECT_EQ(image.GetWindowCenter(), row.expectedCenter);
    }
}

TEST_F(RawImageTest, CreateWithABadSizeTakesTheFieldsButNoPixels) {
    for (const int width : {-1, std::numeric_limits<int>::max()}) {
        acquire();
        const auto record = newRecord(width, 7, m_pixels);
        EXPECT_EQ(m_image.Create(&record), 0);
        EXPECT_EQ(m_image.GetWidth(), width);
        EXPECT_EQ(m_image.IsReadInRAM(), 0);
        EXPECT_EQ(m_image.GetPixelData(), nullptr);
        EXPECT_EQ(m_image.GetDIB(), nullptr);
    }
}

TEST_F(RawImageTest, OpenReadsNoPixelsAndNeedsTheImageFile) {
    auto record = storedRecord();
    record.WindowWidth = 0;
    acquire();
    open(record);
    EXPECT_EQ(m_image.IsReadInRAM(), 0);
    EXPECT_EQ(m_image.GetPixelData(), nullptr);
    EXPECT_EQ(m_image.GetDIB(), nullptr);
    EXPECT_EQ(m_image.GetInitialWindowWidth(), 0);
    EXPECT_EQ(m_image.GetInitialWindowCenter(), 3000);

    record.FilePath = (m_folder / "none.raw").c_str();
    record.Width = 5;
    EXPECT_EQ(m_image.Open(&record), 0);
    EXPECT_EQ(m_image.GetWidth(), 5);
    EXPECT_STREQ(m_image.GetFilePath(), record.FilePath);
}

// --- residency ----------------------------------------------------------------------------------------------------

TEST_F(RawImageTest, NewImageGoesToItsImageFileAndBack) {
    acquire();
    m_image.SetXOffset(2);
    m_image.GetPixelData()[5] = 4711;
    EXPECT_EQ(m_image.WriteToHDD(), 1);
    EXPECT_EQ(m_image.GetPixelData(), nullptr);
    EXPECT_EQ(m_image.GetDIB(), nullptr);
    EXPECT_EQ(m_image.IsReadInRAM(), 0);
    EXPECT_EQ(m_image.WriteToHDD(), 0) << "nothing is resident";

    std::vector<std::uint16_t> changed = m_pixels;
    changed[5] = 4711;
    EXPECT_EQ(pixelsOf(m_folder / "Cache/I.1.2.3.raw"), changed);
    EXPECT_EQ(pixelsOf(m_folder / "Cache/R.1.2.3.raw"), m_pixels);
    EXPECT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_EQ(m_image.ReadInRAM(), 0) << "it is resident";
    EXPECT_TRUE(holds(changed));
    EXPECT_EQ(m_image.GetXOffset(), 2);
}

TEST_F(RawImageTest, OpenedImageGoesToItsWorkFileAndBack) {
    open(storedRecord());
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    m_image.GetPixelData()[0] = 99;
    EXPECT_EQ(m_image.WriteToHDD(), 1);
    EXPECT_EQ(pixelsOf(m_folder / "image.raw"), m_pixels);
    EXPECT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_EQ(m_image.GetPixelData()[0], 99) << "read from the work file";
    EXPECT_EQ(m_image.WriteToHDD(), 1);

    // Not resident: an update goes to the image file, and reads still take the work file.
    const auto other = ramp(kWidth, kHeight, 7);
    EXPECT_EQ(m_image.Update(kWidth, kHeight, other.data(), 14, 13, 100, 50), 1);
    EXPECT_EQ(pixelsOf(m_folder / "image.raw"), other);
    std::vector<std::uint16_t> copy(m_pixels.size());
    EXPECT_EQ(m_image.CopyPixelData(copy.data()), 1);
    EXPECT_EQ(copy[0], 99);
    EXPECT_EQ(m_image.IsReadInRAM(), 0);

    fs::remove(m_folder / "work.raw");
    EXPECT_EQ(m_image.ReadInRAM(), 0);
    EXPECT_EQ(m_image.CopyPixelData(copy.data()), 0);
}

TEST_F(RawImageTest, ANewImageNeverReadsTheWorkFileOfAnEarlierOne) {
    open(storedRecord());
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    ASSERT_EQ(m_image.WriteToHDD(), 1);
    const auto other = ramp(kWidth, kHeight, 1000);
    const auto record = newRecord(kWidth, kHeight, other);
    ASSERT_EQ(m_image.Create(&record), 1);
    ASSERT_EQ(m_image.CreateBAKFile("other", m_folder.path().c_str()), 1);
    ASSERT_EQ(m_image.WriteToHDD(), 1);
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_TRUE(holds(other));
}

TEST_F(RawImageTest, AnotherOpenedImageDoesNotReadTheWorkFileOfTheOneBefore) {
    auto record = storedRecord();
    open(record);
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    m_image.GetPixelData()[0] = 99;
    ASSERT_EQ(m_image.WriteToHDD(), 1);
    open(record);
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_EQ(m_image.GetPixelData()[0], 99) << "the same image: its work file is newer";
    const auto other = ramp(kWidth, kHeight, 1000);
    record.FilePath = m_folder.file("other.raw", other).c_str();
    open(record);
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_TRUE(holds(other));
}

TEST_F(RawImageTest, AFileThatIsTooShortIsNotRead) {
    open(storedRecord());
    fs::resize_file(m_folder / "image.raw", 2 * m_pixels.size() - 1);
    const State before(m_image);
    {
        const RefuseAllocation refuse(0);
        EXPECT_EQ(m_image.ReadInRAM(), 0);
        EXPECT_FALSE(refuse.happened()) << "the length is looked at before memory is asked for";
    }
    EXPECT_EQ(State(m_image), before);
    std::vector<std::uint16_t> copy(m_pixels.size());
    EXPECT_EQ(m_image.CopyPixelData(copy.data()), 0);
}

TEST_F(RawImageTest, FullDiskKeepsTheImageInMemory) {
    acquire();
    const State before(m_image);
    {
        const FileSizeLimit limit(1000);
        EXPECT_EQ(m_image.WriteToHDD(), 0);
        EXPECT_EQ(m_image.CreateBAKFile("4.5.6", m_folder.path().c_str()), 0);
    }
    EXPECT_EQ(State(m_image), before);

    fs::remove(m_folder / "Cache/I.1.2.3.raw");
    fs::create_directory(m_folder / "Cache/I.1.2.3.raw");
    EXPECT_EQ(m_image.WriteToHDD(), 0) << "a folder is in the way";
    EXPECT_EQ(State(m_image), before);
}

TEST_F(RawImageTest, AWorkFileOfAnotherSizeIsNotReadAgain) {
    const auto record = storedRecord();
    open(record);
    const auto larger = ramp(2 * kWidth, kHeight, 9);
    ASSERT_EQ(m_image.ReadInRAM() + m_image.Update(2 * kWidth, kHeight, larger.data(), 14, 13, 9, 9) +
                  m_image.WriteToHDD(),
              3);
    open(record);
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_TRUE(holds(m_pixels));
    EXPECT_EQ(pixelsOf(m_folder / "work.raw"), larger);
}

// A device and a pipe take every byte and give none back.
TEST_F(RawImageTest, WhatIsNoFileKeepsTheImageInMemory) {
    fs::create_directory(m_folder / "Cache");
    fs::create_symlink("/dev/null", m_folder / "Cache/R.1.raw");
    const auto record = newRecord(kWidth, kHeight, m_pixels);
    ASSERT_EQ(m_image.Create(&record), 1);
    EXPECT_EQ(m_image.CreateBAKFile("1", m_folder.path().c_str()), 0);
    EXPECT_STREQ(m_image.GetBAKFilePath(), "");

    acquire();
    const State before(m_image);
    fs::create_symlink("/dev/null", m_folder / "Cache/I.1.2.3.raw");
    EXPECT_EQ(m_image.WriteToHDD(), 0);
    EXPECT_EQ(State(m_image), before);

    auto stored = storedRecord();
    stored.WorkFilePath = "/dev/null";
    open(stored);
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_EQ(m_image.WriteToHDD(), 0);
    EXPECT_TRUE(holds(m_pixels));
}

// --- update, copy -------------------------------------------------------------------------------------------------

TEST_F(RawImageTest, UpdateInMemoryKeepsRatiosAndDropsOffsets) {
    acquire();
    m_image.SetXOffset(3);
    m_image.SetYOffset(4);
    const float ratio = m_image.GetXRatio();
    const auto other = ramp(11, 50);
    EXPECT_EQ(m_image.Update(11, 50, other.data(), 12, 11, 600, 700), 1);
    EXPECT_TRUE(holds(other));
    EXPECT_EQ(State(m_image).values,
              (std::vector{11, 50, kWidth, kHeight, 12, 11, 143, 600, 700, 600, 700, 0, 0, 1, 1}));
    EXPECT_EQ(m_image.GetXRatio(), ratio);
    EXPECT_EQ(m_image.GetDIB(), nullptr);
    EXPECT_EQ(pixelsOf(m_folder / "Cache/R.1.2.3.raw"), m_pixels);
}

TEST_F(RawImageTest, UpdateOnDiskDropsRatiosAndOffsets) {
    acquire();
    m_image.SetYOffset(4);
    ASSERT_EQ(m_image.WriteToHDD(), 1);
    const auto other = ramp(11, 50);
    EXPECT_EQ(m_image.Update(11, 50, other.data(), 14, 13, 600, 700), 1);
    EXPECT_EQ(m_image.GetYOffset(), 0);
    EXPECT_EQ(m_image.GetXRatio(), 0.0f);
    EXPECT_EQ(m_image.GetYRatio(), 0.0f);
    EXPECT_EQ(m_image.IsReadInRAM(), 0);
    EXPECT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_TRUE(holds(other));
    ASSERT_EQ(m_image.WriteToHDD(), 1);

    const FileSizeLimit limit(10);
    m_image.SetXOffset(1);
    EXPECT_EQ(m_image.Update(11, 11, other.data(), 14, 13, 60, 70), 0);
    EXPECT_EQ(m_image.GetHeight(), 11) << "the new geometry stays";
    EXPECT_EQ(m_image.GetXOffset(), 1);
}

TEST_F(RawImageTest, CreateAndUpdateTakeTheirOwnBuffer) {
    acquire();
    auto record = newRecord(kWidth, kHeight - 2, m_pixels);
    record.PixelData = m_image.GetPixelData() + kWidth;
    EXPECT_EQ(m_image.Create(&record), 1);
    EXPECT_TRUE(holds({m_pixels.begin() + kWidth, m_pixels.end() - kWidth}));
    EXPECT_EQ(m_image.GetDIB(), nullptr);
    acquire();
    EXPECT_EQ(m_image.Update(kWidth, kHeight, m_image.GetPixelData(), 14, 13, 0, 0), 1);
    EXPECT_TRUE(holds(m_pixels));
    EXPECT_EQ(m_image.Update(kHeight, kWidth - 3, m_image.GetPixelData() + kHeight, 14, 13, 0, 0), 1);
    EXPECT_TRUE(holds({m_pixels.begin() + kHeight, m_pixels.end()}));
}

TEST_F(RawImageTest, BadUpdatesChangeNothing) {
    acquire();
    const State before(m_image);
    constexpr int kMax = std::numeric_limits<int>::max();
    auto record = newRecord(3, 3, m_pixels);
    record.PixelData = nullptr;
    EXPECT_EQ(m_image.Create(&record) + m_image.Create(nullptr) + m_image.Open(nullptr), 0);
    EXPECT_EQ(m_image.Update(5, 5, nullptr, 14, 13, 0, 0), 0);
    EXPECT_EQ(m_image.Update(-5, 5, m_pixels.data(), 14, 13, 0, 0), 0);
    EXPECT_EQ(m_image.Update(kMax, kMax, m_pixels.data(), 14, 13, 9, 9), 0);
    EXPECT_EQ(State(m_image), before);
    ASSERT_EQ(m_image.WriteToHDD(), 1);
    const State stored(m_image);
    EXPECT_EQ(m_image.Update(5, 5, nullptr, 14, 13, 9, 9), 0);
    EXPECT_EQ(m_image.Update(kMax, 2, m_pixels.data(), 14, 13, 9, 9), 0);
    EXPECT_EQ(State(m_image), stored);
    EXPECT_EQ(pixelsOf(m_folder / "Cache/I.1.2.3.raw"), m_pixels);
}

TEST_F(RawImageTest, CopyingOutNeedsABufferApart) {
    acquire();
    std::vector<std::uint16_t> copy(m_pixels.size() + 1, 9);
    EXPECT_EQ(m_image.CopyPixelData(copy.data()), 1);
    EXPECT_TRUE(samePicture(m_pixels, copy.data(), kWidth, kHeight));
    EXPECT_EQ(copy.back(), 9);
    EXPECT_EQ(m_image.CopyPixelData(nullptr), 0);
    EXPECT_EQ(m_image.CopyPixelData(m_image.GetPixelData()), 0);
    EXPECT_EQ(m_image.CopyPixelData(m_image.GetPixelData() + kWidth), 0);
    EXPECT_TRUE(holds(m_pixels));
}

// --- missing memory -----------------------------------------------------------------------------------------------

TEST_F(RawImageTest, WithoutMemoryTheOldStateStays) {
    const auto other = ramp(40, 41);
    const std::string longName(60, 'n');
    std::optional<State> before;
    const auto prepare = [&] {
        acquire();
        before.emplace(m_image);
    };
    const auto check = [&](int result, bool refused) {
        EXPECT_EQ(result, refused ? 0 : 1);
        EXPECT_TRUE(!refused || State(m_image) == *before);
    };
    const auto update = [&] { return m_image.Update(40, 41, other.data(), 14, 13, 0, 0); };
    const auto copy = [&] { return m_image.CreateBAKFile(longName.c_str(), m_folder.path().c_str()); };
    EXPECT_GT(refuseEachAllocation(prepare, update, check), 0);
    EXPECT_GT(refuseEachAllocation(prepare, copy, check), 1);
}

TEST_F(RawImageTest, WithoutMemoryCreateAndOpenAreAllOldOrWithoutPixels) {
    auto record = newRecord(11, 12, m_pixels);
    // Longer than any path that the image has room for already.
    record.FilePath = std::string(600, 'f').c_str();
    record.BAKFilePath = std::string(600, 'b').c_str();
    record.WorkFilePath = std::string(600, 'w').c_str();
    std::optional<State> before;
    const auto prepare = [&] {
        acquire();
        before.emplace(m_image);
    };
    const auto check = [&](int result, bool refused) {
        EXPECT_EQ(result, refused ? 0 : 1);
        const State after(m_image);
        const bool taken = after.values[0] == 11 && after.paths[0] == record.FilePath.GetString() &&
                           after.paths[1] == record.BAKFilePath.GetString() && !after.bitmap &&
                           !after.buffer == refused && m_image.IsReadInRAM() == !refused;
        EXPECT_TRUE(taken || (refused && after == *before));
    };
    EXPECT_EQ(refuseEachAllocation(
                  prepare, [&] { return m_image.Create(&record); }, check),
              3);
    const auto open = [&] { return m_image.Open(&record); };  // 0: there are no such files
    const auto checkOpened = [&](int, bool refused) {
        const State after(m_image);
        EXPECT_TRUE(refused ? after == *before : after.paths[0] == record.FilePath.GetString());
    };
    EXPECT_EQ(refuseEachAllocation(prepare, open, checkOpened), 3);
}

// --- files --------------------------------------------------------------------------------------------------------

TEST_F(RawImageTest, RawCopyNeedsAPlainNameAndItsParent) {
    const auto record = newRecord(kWidth, kHeight, m_pixels), withoutPixels = newRecord(-1, 1, m_pixels);
    EXPECT_EQ(m_image.CreateBAKFile("1", m_folder.path().c_str()), 0) << "no image yet";
    ASSERT_EQ(m_image.Create(&withoutPixels), 0);
    EXPECT_EQ(m_image.CreateBAKFile("1", m_folder.path().c_str()), 0);
    ASSERT_EQ(m_image.Create(&record), 1);
    const State before(m_image);
    for (const char* name : {"", "../x", "a/b", "a\\b", "a\nb", "\x7f"})
        EXPECT_EQ(m_image.CreateBAKFile(name, m_folder.path().c_str()), 0) << name;
    EXPECT_EQ(m_image.CreateBAKFile(nullptr, m_folder.path().c_str()), 0);
    EXPECT_EQ(m_image.CreateBAKFile("1", ""), 0);
    EXPECT_EQ(m_image.CreateBAKFile("1", nullptr), 0);
    EXPECT_EQ(m_image.CreateBAKFile("1", (m_folder / "no/such").c_str()), 0);
    EXPECT_FALSE(fs::exists(m_folder / "Cache")) << "nothing was made for a bad name";
    EXPECT_EQ(State(m_image), before);
    EXPECT_EQ(m_image.CreateBAKFile("%s%n *?", (m_folder.path() + '/').c_str()), 1)
        << "names are text, not patterns";
    EXPECT_TRUE(fs::exists(m_folder / "Cache/R.%s%n *?.raw"));

    open(storedRecord());
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_EQ(m_image.CreateBAKFile("1", m_folder.path().c_str()), 0) << "an opened image";
}

TEST_F(RawImageTest, AMissingRawCopyInvalidatesOnlyANewImage) {
    acquire();
    EXPECT_EQ(m_image.RemoveBAKFile(), 1);
    EXPECT_EQ(m_image.IsBAKFileValid(), 1) << "until the next look";
    EXPECT_EQ(m_image.RemoveBAKFile(), 0);
    EXPECT_EQ(m_image.WriteToHDD(), 0);
    EXPECT_EQ(m_image.IsBAKFileValid(), 0);
    EXPECT_TRUE(holds(m_pixels));

    open(storedRecord());
    EXPECT_EQ(m_image.IsBAKFileValid(), 1);
    EXPECT_EQ(m_image.RemoveBAKFile(), 1);
    EXPECT_EQ(m_image.ValidateFile(), 1);
    EXPECT_EQ(m_image.IsBAKFileValid(), 0);
    auto record = storedRecord();
    record.Mode = 7;  // neither new nor opened
    m_image.Open(&record);
    rawImage unset;
    EXPECT_EQ(m_image.ValidateFile() + unset.ValidateFile(), 0);
    EXPECT_EQ(unset.RemoveBAKFile(), 0);
}

TEST_F(RawImageTest, FoldersAreNeitherFoundNorDeleted) {
    auto record = storedRecord();
    fs::create_directory(m_folder / "folder");
    record.BAKFilePath = (m_folder / "folder").c_str();
    open(record);
    EXPECT_EQ(m_image.IsBAKFileValid(), 0);
    EXPECT_EQ(m_image.RemoveBAKFile(), 0);
    record.FilePath = record.BAKFilePath;
    EXPECT_EQ(m_image.Open(&record), 0);
    EXPECT_TRUE(fs::exists(m_folder / "folder"));
}

TEST_F(RawImageTest, CloseDeletesAWorkFileThatIsNotTheImageFile) {
    for (const std::string work : {"work.raw", "image.raw", "link.raw"}) {
        SCOPED_TRACE(work);
        auto record = storedRecord();
        if (work == "link.raw") fs::create_hard_link(m_folder / "image.raw", m_folder / work);
        if (work == "work.raw") m_folder.file(work, std::string("of somebody else"));
        record.WorkFilePath = (m_folder / work).c_str();
        open(record);
        m_image.Close();
        EXPECT_TRUE(fs::exists(m_folder / work)) << "nothing was written to it";
        EXPECT_TRUE(fs::exists(m_folder / "image.raw"));
        ASSERT_EQ(m_image.ReadInRAM(), 1);
        ASSERT_EQ(m_image.WriteToHDD(), 1);
        m_image.Close();
        EXPECT_EQ(fs::exists(m_folder / work), work != "work.raw");
        EXPECT_TRUE(fs::exists(m_folder / "image.raw"));
        EXPECT_TRUE(fs::exists(m_folder / "copy.raw"));
    }
}

TEST_F(RawImageTest, AWorkFileThatIsTheRawCopyByNowStays) {
    open(storedRecord());
    ASSERT_EQ(m_image.ReadInRAM() + m_image.WriteToHDD(), 2);
    fs::remove(m_folder / "copy.raw");
    fs::create_hard_link(m_folder / "work.raw", m_folder / "copy.raw");
    m_image.Close();
    EXPECT_TRUE(fs::exists(m_folder / "work.raw"));
}

// The pixels as acquired are never written over, under whatever name.
TEST_F(RawImageTest, TheRawCopyIsNeverWrittenTo) {
    for (const bool linked : {false, true}) {
        auto record = storedRecord();
        const fs::path work = m_folder / (linked ? "linked.raw" : "copy.raw");
        if (linked) fs::create_hard_link(m_folder / "copy.raw", work);
        const auto before = fs::file_size(m_folder / "copy.raw");
        const auto stamp = fs::last_write_time(m_folder / "copy.raw");
        record.WorkFilePath = work.c_str();
        open(record);
        ASSERT_EQ(m_image.ReadInRAM(), 1);
        EXPECT_EQ(m_image.WriteToHDD(), 0);
        EXPECT_EQ(m_image.IsReadInRAM(), 1);
        record.FilePath = work.c_str();
        open(record);
        EXPECT_EQ(m_image.Update(5, 5, m_pixels.data(), 14, 13, 9, 9), 0);
        EXPECT_EQ(m_image.ReadInRAM(), 1);
        EXPECT_EQ(m_image.WriteFileForPRES("", nullptr), 0);
        EXPECT_EQ(fs::file_size(m_folder / "copy.raw"), before);
        EXPECT_EQ(fs::last_write_time(m_folder / "copy.raw"), stamp);
    }
}

}  // namespace

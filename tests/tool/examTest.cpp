// Exams on disk: what is written is what is reopened, room is made oldest first, and no exam file is trusted.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "examMaker.h"
#include "examTree.h"
#include "toolRun.h"

namespace qvr::tool {
namespace {

namespace fs = std::filesystem;

// What a screen shows of a series: display with marks.
std::vector<std::uint32_t> shown(dcmSeries& series, const RECT& display) {
    CRasterDC surface(display.right, display.bottom);
    series.DrawImage(&display, &surface);
    std::vector<std::uint32_t> screen;
    for (int y = 0; y < display.bottom; ++y) {
        const auto* row = static_cast<const std::uint32_t*>(surface.GetRow(y));
        screen.insert(screen.end(), row, row + display.right);
    }
    return screen;
}

class ExamTest : public testing::Test {
protected:
    void add(ExamBuilder& builder, int number) {
        Curve curve;
        curve.type = number % 5;
        curve.k = 3;
        builder.add(recordsOf(number), picture(number), {"given", 900 * number, 4000, 0, 0}, curve);
    }
    dcmSeries* series(ExamBuilder& builder, int number) {
        return builder.exam().GetStudy(0)->GetSeries(number - 1);
    }
    ToolResult run(const Arguments& arguments, int code = 0) {
        auto result = runTool(arguments);
        EXPECT_EQ(result.code, code) << result.err;
        return result;
    }

    TemporaryFolder m_temporary;
    ExamFolder m_folder{m_temporary / "exam"};
};

TEST_F(ExamTest, ShowsTheSamePicturesWhenReopened) {
    ExamBuilder builder(m_folder);
    const RECT display = displayOf(builder.record());
    std::vector<std::vector<std::uint32_t>> before;
    for (int number = 1; number <= 7; ++number) {
        add(builder, number);
        before.push_back(shown(*series(builder, number), display));
    }
    CRasterDC surface(display.right, display.bottom);

    // A user works on two of the resident images.
    dcmSeries& windowed = *series(builder, 4);
    ASSERT_TRUE(windowed.UpdateImage(2500, 2100, &surface));
    rawImage& marked = *series(builder, 6)->GetDcmImage()->GetRawImage();
    ASSERT_TRUE(marked.AddMark("L", &display, &surface));
    ASSERT_TRUE(marked.AddMark("stehend", &display, &surface));
    marked.InflateMark(0, &display, &surface);
    marked.DeflateMark(1);
    marked.SetMarkDISPLeftTop(1, {333, 444}, &display, &surface);
    marked.SetMarkSelected(-1);
    for (const std::size_t position : {3U, 5U}) {
        const auto now = shown(*series(builder, static_cast<int>(position) + 1), display);
        EXPECT_FALSE(now == before[position]);
        before[position] = now;
    }
    EXPECT_TRUE(builder.finish().empty());

    ExamRecord record = m_folder.read();
    EXPECT_EQ(toText(record), toText(builder.record()));
    const auto images = imagesOf(record);
    ASSERT_EQ(images.size(), 7U);
    for (const auto& image : images) {
        dcmExam exam;
        reopenRecords(exam, record);
        reopenImage(exam, m_folder, record, image, true, surface);
        dcmSeries& again = *exam.GetStudy(0)->GetSeries(image.position);
        const auto number = static_cast<std::size_t>(image.position);
        const auto pixels = picture(image.position + 1).pixels;
        const auto* read = again.GetDcmImage()->GetRawImage()->GetPixelData();
        EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), read)) << image.uid();
        EXPECT_STREQ(again.GetBodyPartExamined(), "HAND");
        EXPECT_EQ(again.GetExposureIndex(), 301 + image.position);
        EXPECT_TRUE(shown(again, display) == before[number]) << image.uid();
    }
    EXPECT_EQ(images[5].image().marks.size(), 2U);
}

TEST_F(ExamTest, MakesRoomWithTheOldestImage) {
    ExamBuilder builder(m_folder);
    for (int number = 1; number <= 6; ++number) add(builder, number);
    EXPECT_EQ(builder.exam().GetSeriesInRAMCount(), 5);
    EXPECT_EQ(builder.exam().GetSeriesInRAM(0), series(builder, 2));
    EXPECT_EQ(pixelsOf(m_folder.imageFile(uidOf(1))), picture(1).pixels);
    EXPECT_FALSE(fs::exists(m_folder.imageFile(uidOf(6))));
}

TEST_F(ExamTest, TakesNoImageInWhenTheOldestCannotBeWritten) {
    ExamBuilder builder(m_folder);
    for (int number = 1; number <= 5; ++number) add(builder, number);
    fs::create_directory(m_folder.imageFile(uidOf(1)));  // where the oldest image's file should go

    EXPECT_THROW(add(builder, 6), StopFailure);

    EXPECT_EQ(builder.exam().GetSeriesInRAMCount(), 5);
    const auto* kept = series(builder, 1)->GetDcmImage()->GetRawImage()->GetPixelData();
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(std::vector<std::uint16_t>(kept, kept + 67 * 45), picture(1).pixels);
    EXPECT_FALSE(fs::exists(m_folder.rawCopy(uidOf(6))));
    EXPECT_EQ(builder.finish(), std::vector<std::string>{uidOf(1)});
    ExamRecord record = m_folder.read();
    EXPECT_EQ(imagesOf(record).size(), 5U);
    EXPECT_FALSE(imagesOf(record)[0].image().imageFile);
    EXPECT_TRUE(imagesOf(record)[1].image().imageFile);
}

TEST_F(ExamTest, NamesAnImageBeforeItsFilesAreThereAndForgetsItWithoutItsRawCopy) {
    ExamBuilder builder(m_folder);
    add(builder, 1);
    fs::create_directory(m_folder.rawCopy(uidOf(2)));  // where the raw copy should go
    EXPECT_THROW(add(builder, 2), StopFailure);
    EXPECT_NE(contentOf(m_folder.examFile()).find(uidOf(2)), std::string::npos) << "named before it failed";
    EXPECT_FALSE(builder.holds(uidOf(2)));
    EXPECT_TRUE(builder.finish().empty());
    ExamRecord record = m_folder.read();
    EXPECT_EQ(imagesOf(record).size(), 1U);
}

TEST_F(ExamTest, IsBuiltListedAndExportedAsRendered) {
    const std::string source = m_temporary / "in";
    fs::create_directories(source + "/deeper");
    writeDicoms(source, 8);
    fs::rename(source + "/f03.dcm", source + "/deeper/f03.dcm");
    m_temporary.file("in/notes.txt", std::string("no image"));
    fs::create_directory_symlink(m_temporary.path(), source + "/linked");
    m_temporary.file("in/DICOMDIR", std::string("directory of the medium"));
    const auto built = run({"exam", "build", source, "-o", m_folder.path()});
    EXPECT_EQ(built.out, m_folder.path() + "  8 images in 1 study\n");
    EXPECT_NE(built.err.find("2 other files are left out"), std::string::npos) << built.err;

    EXPECT_NE(built.err.find("1 link to a folder is left out"), std::string::npos) << built.err;
    const auto list = run({"exam", "list", m_folder.path()});
    EXPECT_EQ(std::count(list.out.begin(), list.out.end(), '\n'), 8);
    run({"exam", "export", m_folder.path(), "-o", m_temporary / "png"});
    run({"exam", "export", m_folder.path(), "-o", m_temporary / "raw", "--format", "raw"});
    for (int number : {1, 3, 8}) {
        const std::string name =
            std::string(number == 3 ? "deeper/" : "") + "f0" + std::to_string(number) + ".dcm";
        const std::string out = m_temporary / ("r" + std::to_string(number) + ".png");
        run({"render", source + '/' + name, "-o", out, "-q"});
        EXPECT_EQ(contentOf(out), contentOf(m_temporary / ("png/" + uidOf(number) + ".png")));
        EXPECT_EQ(contentOf(m_folder.rawCopy(uidOf(number))),
                  contentOf(m_temporary / ("raw/" + uidOf(number) + ".raw")));
    }
    // No work file and no temporary file stays behind.
    run({"cache", "check", m_folder.path()});

    const auto again = run({"exam", "build", source, "-o", m_folder.path()}, 6);
    EXPECT_NE(again.err.find("--force"), std::string::npos);
    fs::remove(source + "/f01.dcm");
    const auto forced = run({"exam", "build", source, "-o", m_folder.path(), "--force"});
    EXPECT_NE(forced.err.find("still in Cache: " + uidOf(1)), std::string::npos) << forced.err;
    EXPECT_TRUE(fs::exists(m_folder.rawCopy(uidOf(1))));
}

}  // namespace
}  // namespace qvr::tool

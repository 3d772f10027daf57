// Undo copies: restored like a stack, discarded like a queue.
#include <gtest/gtest.h>

#include "qvr/image/rawImage.h"
#include "support/pictures.h"
#include "support/refuseAllocation.h"
#include "support/temporaryFolder.h"

namespace {

class UndoTest : public testing::Test {
protected:
    static constexpr int kWidth = 13, kHeight = 7;

    void SetUp() override {
        const auto pixels = ramp(kWidth, kHeight);
        const auto record = newRecord(kWidth, kHeight, pixels);
        ASSERT_EQ(m_image.Create(&record), 1);
        ASSERT_EQ(m_image.CreateBAKFile("1", m_folder.path().c_str()), 1);
    }
    // State n has its own size, pixels and window.
    void enter(int n) {
        const auto pixels = ramp(kWidth + n, kHeight, 1000 * n);
        ASSERT_EQ(m_image.Update(kWidth + n, kHeight, pixels.data(), 14, 13, 100 + n, 200 + n), 1);
    }
    testing::AssertionResult isIn(int n) {
        if (m_image.GetWidth() != kWidth + n || m_image.GetHeight() != kHeight)
            return testing::AssertionFailure() << "size of state " << m_image.GetWidth() - kWidth;
        if (m_image.GetWindowWidth() != 100 + n || m_image.GetWindowCenter() != 200 + n)
            return testing::AssertionFailure() << "window " << m_image.GetWindowWidth();
        return samePicture(ramp(kWidth + n, kHeight, 1000 * n), m_image.GetPixelData(), kWidth + n, kHeight);
    }

    TemporaryFolder m_folder;
    rawImage m_image;
};

TEST_F(UndoTest, ThreeCopiesComeBackNewestFirst) {
    EXPECT_EQ(m_image.ReadUndoData(), 0);
    for (int n = 1; n <= 4; ++n) {
        enter(n);
        ASSERT_EQ(m_image.SaveUndoData(), 1);
    }
    enter(9);
    for (const int n : {4, 3, 2}) {
        EXPECT_EQ(m_image.ReadUndoData(), 1);
        EXPECT_TRUE(isIn(n));
    }
    EXPECT_EQ(m_image.ReadUndoData(), 0);
    EXPECT_TRUE(isIn(2));
}

TEST_F(UndoTest, ACopyIsNotTouchedByLaterWork) {
    for (int n = 1; n <= 5;
         ++n) {  // the same size throughout: the buffer of a dropped copy may be used again
        enter(1);
        m_image.GetPixelData()[0] = static_cast<std::uint16_t>(n);
        ASSERT_EQ(m_image.SaveUndoData(), 1);
        m_image.GetPixelData()[0] = 99;
    }
    for (const int n : {5, 4, 3}) {
        ASSERT_EQ(m_image.ReadUndoData(), 1);
        EXPECT_EQ(m_image.GetPixelData()[0], n);
    }
}

TEST_F(UndoTest, RestoresPixelsSizeAndWindowAlone) {
    constexpr RECT screen{0, 0, 40, 30};
    enter(5);
    ASSERT_EQ(m_image.SaveUndoData(), 1);
    const auto pixels = ramp(4, 3);
    ASSERT_EQ(m_image.Update(4, 3, pixels.data(), 14, 11, 50, 60), 1);
    ASSERT_EQ(m_image.BuildDisplayImage(&screen, nullptr, 1), 1);
    m_image.SetXOffset(1);
    const CDib* const bitmap = m_image.GetDIB();
    const std::vector<std::uint8_t> shown(bitmap->Bits, bitmap->Bits + bitmap->ImageSize);
    ASSERT_EQ(m_image.ReadUndoData(), 1);
    EXPECT_TRUE(isIn(5));
    EXPECT_EQ(m_image.GetHighBit(), 11);
    EXPECT_EQ(m_image.GetInitialWindowWidth(), 50);
    EXPECT_EQ(m_image.GetXOffset(), 1);
    EXPECT_EQ(m_image.GetXRatio(), 10.0f);
    ASSERT_EQ(m_image.GetDIB(), bitmap);
    EXPECT_EQ(std::vector<std::uint8_t>(bitmap->Bits, bitmap->Bits + bitmap->ImageSize), shown);
    EXPECT_EQ(m_image.UpdateDisplayImage(), 1);  // the bitmap of another size is filled, not overrun

    ASSERT_EQ(m_image.SaveUndoData(), 1);
    ASSERT_EQ(m_image.Update(4, 3, pixels.data(), 12, 11, 50, 60), 1);
    ASSERT_EQ(m_image.ReadUndoData(), 1);
    EXPECT_EQ(m_image.GetBitsStored(), 12);
}

TEST_F(UndoTest, CopiesOutlastTheStayOnDisk) {
    for (const int n : {3, 4, 1}) {
        enter(n);
        ASSERT_EQ(m_image.SaveUndoData(), 1);
    }
    enter(2);
    ASSERT_EQ(m_image.WriteToHDD(), 1);
    EXPECT_EQ(m_image.SaveUndoData(), 0);
    EXPECT_EQ(m_image.ReadUndoData(), 0);
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_TRUE(isIn(2));
    EXPECT_EQ(m_image.ReadUndoData(), 1);
    EXPECT_TRUE(isIn(1));
    ASSERT_EQ(m_image.WriteToHDD(), 1);
    ASSERT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_TRUE(isIn(1));
    for (const int n : {4, 3}) EXPECT_TRUE(m_image.ReadUndoData() == 1 && isIn(n)) << "none was dropped";
}

TEST_F(UndoTest, ASaveWithoutMemoryKeepsTheImageAndTheNewerCopies) {
    for (int n = 1; n <= 3; ++n) {
        enter(n);
        ASSERT_EQ(m_image.SaveUndoData(), 1);
    }
    enter(4);
    {
        const RefuseAllocation refusal(0);
        EXPECT_EQ(m_image.SaveUndoData(), 0);
    }
    EXPECT_TRUE(isIn(4));
    for (const int n : {3, 2}) {
        const RefuseAllocation refusal(0);  // a copy is moved in
        EXPECT_EQ(m_image.ReadUndoData(), 1);
        EXPECT_TRUE(m_image.GetWidth() == kWidth + n);
    }
    EXPECT_TRUE(isIn(2));
    EXPECT_EQ(m_image.ReadUndoData(), 0);
}

}  // namespace

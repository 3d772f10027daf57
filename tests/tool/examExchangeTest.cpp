// An exam that takes another one's place, with every rename of it failing, and the program killed before each.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <set>

#include "errors.h"
#include "examExchange.h"
#include "examMaker.h"
#include "examTree.h"

namespace {

enum class Way { failOnce, failOnward, kill };

struct Plan {
    int at = 0;  // the n-th rename from now on; 0: none
    Way way = Way::failOnce;
    int seen = 0;
} plan;

}  // namespace

// Stands before the system's function for the tool and the standard library alike.
extern "C" __attribute__((visibility("default"))) int rename(const char* from, const char* to) noexcept {
    using Rename = int (*)(const char*, const char*);
    static const auto next = reinterpret_cast<Rename>(dlsym(RTLD_NEXT, "rename"));
    const int number = ++plan.seen;
    if (plan.at == 0 || number < plan.at || (number > plan.at && plan.way != Way::failOnward))
        return next(from, to);
    if (plan.way == Way::kill) raise(SIGKILL);
    errno = EIO;
    return -1;
}

namespace {

namespace fs = std::filesystem;
using namespace qvr::tool;

const Window kWindow{"given", 4000, 2000};

// An exam of two images, 1 and 2, and one in its place that has 2 and 3 with other pixels.
class ExamExchange : public testing::Test {
protected:
    ExamExchange() { build(kOld); }
    ~ExamExchange() override { plan = {}; }

    using Numbers = std::vector<std::pair<int, int>>;  // UID and picture
    void build(const Numbers& images, const Plan& wanted = {}) const {
        ExamBuilder builder(m_folder);
        builder.checkFolder(true);
        for (const auto& [number, content] : images)
            builder.add(recordsOf(number), picture(content), kWindow, {});
        ASSERT_TRUE(builder.finish().empty());
        plan = wanted;
        builder.putInPlace(true);
    }
    void replace(const Plan& wanted) const { build(kNew, wanted); }

    // Which exam is there, whole: every file has the size and the checksum that the exam file tells of.
    bool isWhole(const Numbers& images) const {
        ExamRecord exam = m_folder.read();
        std::size_t found = 0;
        for (const auto& image : imagesOf(exam)) {
            const auto same = [&](const auto& wanted) {
                const auto pixels = picture(wanted.second).pixels;
                return image.uid() == uidOf(wanted.first) &&
                       image.image().rawCopy.checksum == checksumOf(pixels.data(), pixels.size());
            };
            found += std::any_of(images.begin(), images.end(), same) &&
                     m_folder.lookAtImage(image.image(), true).whole() &&
                     m_folder.lookAtRawCopy(image.image(), true).whole();
        }
        return found == images.size();
    }
    std::set<std::string> names() const {
        const auto all = m_folder.names();
        return {all.begin(), all.end()};
    }
    int renames() const {
        replace({});
        return plan.seen;
    }

    const Numbers kOld = {{1, 1}, {2, 2}};
    const Numbers kNew = {{2, 5}, {3, 6}};
    TemporaryFolder m_temporary;
    ExamFolder m_folder{m_temporary / "exam"};
};

TEST_F(ExamExchange, KilledAtAnyRenameIsTheOldExamOrCanBeFinished) {
    const int count = renames();
    ASSERT_GE(count, 5);
    int old = 0, begun = 0;
    for (int at = 1; at <= count; ++at) {
        SCOPED_TRACE(at);
        fs::remove_all(m_folder.path());
        build(kOld);
        const pid_t child = fork();
        if (child == 0) {
            replace({at, Way::kill});
            _exit(1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        if (m_folder.inExchange()) {
            ++begun;
            EXPECT_THROW((void)m_folder.read(), Failure);
        } else {
            const bool isOld = !fs::exists(m_folder.exchange());
            EXPECT_TRUE(isWhole(isOld ? kOld : kNew));
            old += isOld;
            if (isOld) continue;
        }
        finishExchange(m_folder);
        EXPECT_TRUE(isWhole(kNew));
        EXPECT_EQ(names(), (std::set<std::string>{"Cache", "exam.json"}));
        EXPECT_EQ(pixelsOf(m_folder.rawCopy(uidOf(1))), picture(1).pixels);
    }
    EXPECT_GE(old, 1);
    EXPECT_GE(begun, 3);
}

TEST_F(ExamExchange, ThatFailsIsTakenBackOrCanBeFinished) {
    const int count = renames();
    int kept = 0, finished = 0;
    for (const Way way : {Way::failOnce, Way::failOnward})
        for (int at = 1; at <= count; ++at) {
            SCOPED_TRACE(at);
            fs::remove_all(m_folder.path());
            build(kOld);
            std::string sentence;
            try {
                replace({at, way});
            } catch (const Failure& failure) {
                sentence = failure.what();
            }
            plan = {};
            if (sentence.find("kept as it was") != std::string::npos) {
                ++kept;
                EXPECT_TRUE(isWhole(kOld));
                EXPECT_EQ(names(), (std::set<std::string>{"Cache", "exam.json"}));
                continue;
            }
            ++finished;
            EXPECT_NE(sentence.find("--repair"), std::string::npos) << sentence;
            finishExchange(m_folder);
            EXPECT_TRUE(isWhole(kNew));
            EXPECT_EQ(pixelsOf(m_folder.rawCopy(uidOf(1))), picture(1).pixels);
        }
    EXPECT_GE(kept, 4);
    EXPECT_GE(finished, 3);
}

}  // namespace

// Marks as they are asked for on the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qvr/platform/types.h>

namespace qvr::tool {

inline constexpr std::size_t kMostMarks = 3;

/// "TEXT@PLACE": the place is left, center or right with top or bottom, or the text's top left corner in image pixels.
struct MarkRequest {
    enum class Column { left, center, right };
    enum class Row { top, bottom };
    std::string text;  ///< UTF-8
    Column column = Column::left;
    Row row = Row::top;
    std::optional<CPoint> corner;  ///< y downward; then column and row count for nothing
};
/// The last '@' is the one in front of the place. @return nothing without a text or a place
std::optional<MarkRequest> parseMark(std::string_view text);

/// Height of the letters' line: "8mm" or "120px".
struct MarkHeight {
    double value = 0;
    bool isMillimetres = false;
};
std::optional<MarkHeight> parseMarkHeight(std::string_view text);

/// --mark and --mark-height.
class MarkOptions {
public:
    /// @param needed  at least one mark must be given
    void declare(CLI::App& app, bool needed, bool withHeight);
    /// @throws Failure for a value that is not understood
    void check();
    const std::vector<MarkRequest>& requests() const { return m_requests; }

    /// Refuses more marks than an image holds and characters that no font has. @throws Failure
    /// @param nothingDone  "Nothing was burned."
    void checkDrawable(const std::string& file, const std::string& nothingDone) const;
    /// The asked height in image pixels; when none is asked for, that of 40 display pixels with the whole image in a
    /// display of 1000 x 800.
    /// @param spacing  millimetres per column and per row
    /// @throws Failure for millimetres without a spacing and for a height that makes no letters
    int heightInPixels(const std::string& file, CSize image,
                       const std::optional<std::pair<double, double>>& spacing) const;

private:
    std::vector<std::string> m_texts;
    std::string m_heightText;
    std::vector<MarkRequest> m_requests;
    std::optional<MarkHeight> m_height;
};

}  // namespace qvr::tool

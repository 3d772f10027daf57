// OpenCV, on one thread. Targets are made beforehand, so that no row pays for fresh memory.
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/peers.h"

namespace bench {

namespace {

cv::Mat matOf(const Picture& picture) {
    return {picture.height, picture.width, CV_16UC1, picture.pixels};
}

}  // namespace

bool peersBuilt() {
    cv::setNumThreads(1);
    return true;
}

Work opencvDisplay(const Picture& picture, int width, int height, const Window& window) {
    struct State {
        cv::Mat source, reduced, real, grey;
    };
    auto state = std::make_shared<State>();
    state->source = matOf(picture);
    state->grey = cv::Mat(height, width, CV_8UC1);
    const bool whole = width == picture.width && height == picture.height;
    const double low = window.center - window.width / 2;
    const double scale = 1.0 / window.width;
    return [=] {
        if (!whole) cv::resize(state->source, state->reduced, {width, height}, 0, 0, cv::INTER_AREA);
        const cv::Mat& means = whole ? state->source : state->reduced;
        if (!window.sigmoid) {
            means.convertTo(state->grey, CV_8U, 255.0 * scale, -255.0 * scale * low);
            return;
        }
        // exp(-4 (t - 0.5)), then 255 / (1 + that)
        means.convertTo(state->real, CV_32F, -4.0 * scale, 4.0 * (scale * low + 0.5));
        cv::exp(state->real, state->real);
        cv::add(state->real, 1.0, state->real);
        cv::divide(255.0, state->real, state->grey, CV_8U);
    };
}

Work opencvWindow(const Picture& picture) {
    auto histogram = std::make_shared<cv::Mat>();
    const cv::Mat source = matOf(picture);
    return [=] {
        const int bins = 16384;
        const float range[] = {0.0f, 16384.0f};
        const float* ranges[] = {range};
        cv::calcHist(&source, 1, nullptr, cv::Mat(), *histogram, 1, &bins, ranges);
    };
}

Work opencvTurn(const Picture& picture) {
    auto target = std::make_shared<cv::Mat>(picture.width, picture.height, CV_16UC1);
    const cv::Mat source = matOf(picture);
    return [=] { cv::rotate(source, *target, cv::ROTATE_90_CLOCKWISE); };
}

Work opencvMirror(const Picture& picture, bool leftToRight) {
    auto target = std::make_shared<cv::Mat>(picture.height, picture.width, CV_16UC1);
    const cv::Mat source = matOf(picture);
    return [=] { cv::flip(source, *target, leftToRight ? 1 : 0); };
}

Work opencvInvert(const Picture& picture) {
    const cv::Mat source = matOf(picture);
    return [=] { cv::subtract(cv::Scalar(16383), source, source); };
}

Work opencvCut(const Picture& picture, const Area& area) {
    auto target = std::make_shared<cv::Mat>(area.height, area.width, CV_16UC1);
    const cv::Mat source = matOf(picture);
    return [=] { source(cv::Rect(area.x, area.y, area.width, area.height)).copyTo(*target); };
}

Work opencvMask(const Picture& picture, const Area& area) {
    auto target = std::make_shared<cv::Mat>(picture.height, picture.width, CV_16UC1);
    const cv::Mat source = matOf(picture);
    return [=] {
        const cv::Rect middle((source.cols - area.width) / 2, (source.rows - area.height) / 2, area.width,
                              area.height);
        target->setTo(65535);
        source(cv::Rect(area.x, area.y, area.width, area.height)).copyTo((*target)(middle));
    };
}

Work opencvReduce(const std::uint8_t* bytes, int width, int height, int newWidth, int newHeight) {
    auto target = std::make_shared<cv::Mat>(newHeight, newWidth, CV_8UC1);
    const cv::Mat source(height, width, CV_8UC1, const_cast<std::uint8_t*>(bytes));
    return [=] { cv::resize(source, *target, {newWidth, newHeight}, 0, 0, cv::INTER_AREA); };
}

}  // namespace bench

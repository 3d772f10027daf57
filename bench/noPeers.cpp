// Built where OpenCV or DCMTK is missing: no peer has anything to run.
#include "bench/peers.h"

namespace bench {

bool peersBuilt() {
    return false;
}

Work opencvDisplay(const Picture&, int, int, const Window&) {
    return {};
}
Work dcmtkDisplay(const Picture&, int, int, const Window&) {
    return {};
}
Work opencvWindow(const Picture&) {
    return {};
}
Work dcmtkWindow(const Picture&) {
    return {};
}
Work opencvTurn(const Picture&) {
    return {};
}
Work dcmtkTurn(const Picture&) {
    return {};
}
Work opencvMirror(const Picture&, bool) {
    return {};
}
Work dcmtkMirror(const Picture&, bool) {
    return {};
}
Work opencvInvert(const Picture&) {
    return {};
}
Work opencvCut(const Picture&, const Area&) {
    return {};
}
Work dcmtkCut(const Picture&, const Area&) {
    return {};
}
Work opencvMask(const Picture&, const Area&) {
    return {};
}
Work opencvReduce(const std::uint8_t*, int, int, int, int) {
    return {};
}

}  // namespace bench

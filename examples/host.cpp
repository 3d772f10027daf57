// Shows an exposure in the host's own frame buffer.
#include <qvr/qvr.h>

#include <cstdio>
#include <vector>

int main() {
    std::vector<std::uint16_t> exposure(1000 * 600);  // 14 bits, the bottom row first
    for (std::size_t i = 0; i < exposure.size(); ++i) exposure[i] = static_cast<std::uint16_t>(i / 1000 * 25);

    QVR_ST_RAW_IMAGE record;
    record.Width = 1000, record.Height = 600, record.BitsStored = 14, record.PixelData = exposure.data();
    std::vector<std::uint32_t> frameBuffer(800 * 600);  // 0x00RRGGBB, the top row first
    CRasterDC surface(frameBuffer.data(), 800, 600, 800 * 4);
    const RECT window{0, 0, 800, 600};

    rawImage image;
    if (!image.Create(&record) || !image.BuildDisplayImage(&window, &surface, 1)) return 1;
    image.Draw(&window, &surface);
    std::printf("window %d/%d\n", image.GetWindowCenter(), image.GetWindowWidth());
    for (std::size_t y = 0; y < 600; y += 100) std::printf("%06x\n", frameBuffer[800 * y + 400]);
}

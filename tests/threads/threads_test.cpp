// Every operation in four threads at once, each on images of its own: the results of one thread alone. Under
// ThreadSanitizer, which sees what no result shows.

#include "support/g4_images.h"
#include "support/operations.h"
#include "support/pages.h"
#include "tilepress/ccitt.h"

#include <atomic>
#include <barrier>
#include <functional>
#include <thread>

using namespace support;

namespace {

constexpr unsigned kThreads = 4, kRounds = 4;
constexpr std::uint32_t kWidth = 150, kHeight = 90;

using Results = std::vector<Picture>;

/// Runs the operations of as many seeds one after another, and then at once and more than once.
void expectTheSameInThreads(const std::function<Results(unsigned seed)>& operations, unsigned count = kThreads) {
    std::vector<Results> alone;
    for (unsigned seed = 0; seed < count; ++seed) alone.push_back(operations(seed));
    std::vector<std::vector<Results>> together(count);
    std::barrier start(count);
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < count; ++seed)
        threads.emplace_back([&, seed] {
            start.arrive_and_wait();
            for (unsigned round = 0; round < kRounds; ++round) together[seed].push_back(operations(seed));
        });
    for (std::thread& thread : threads) thread.join();
    for (unsigned seed = 0; seed < count; ++seed)
        for (const Results& results : together[seed]) EXPECT_EQ(results, alone[seed]) << "thread " << seed;
}

Picture pageOf(unsigned seed) {
    std::mt19937 random(seed);
    return randomPicture(random, kWidth, kHeight, 20 + 20 * seed);  // one of them dark
}

Picture taken(IImg* image) { return result<IImg>(image); }

template <class Object>
Results resultsOf(Object& object) {
    Results results;
    for (const Operation& operation : operationsOn(object)) results.push_back(operation.run());
    return results;
}

/// What images of any kind do; `image` is changed in the end.
Results transforms(IImg& image, IImg& other) {
    Results results = resultsOf(image);
    if (image.getType() != ImageTypeBilevelG4) {
        RasOpXfmAttr place{};
        image.doRasOpInPlace(RasOpAnd, place, other);
        image.invert();
        IntPtT from{3, 4}, to{90, 50};
        image.drawLines(&from, &to, false);
        results.push_back(pictureOf(&image));
    }
    results.emplace_back(1, 1, image.getBackgroundColor());
    return results;
}

/// Pixels of a kind.
template <class Image>
Picture pixelsOf(unsigned seed) {
    Picture picture = pageOf(seed);
    for (auto& pixel : picture.pixels) pixel = pixel * 0x01234567 & kWhole<Image>;
    return picture;
}

template <class Image>
Results transformsOf(unsigned seed) {
    const auto image = imageOf<Image>(pixelsOf<Image>(seed)), other = imageOf<Image>(pixelsOf<Image>(3 - seed));
    return transforms(*image, *other);
}

template <class Kind>
Results handleOperationsOf(unsigned seed) {
    return resultsOf(*handleOf<Kind>(pixelsOf<typename Kind::Image>(seed)));
}

template <class Numbers>
Picture asPicture(const Numbers& numbers) {
    Picture picture(numbers.size(), 1);
    std::copy(numbers.begin(), numbers.end(), picture.pixels.begin());
    return picture;
}

}  // namespace

TEST(Threads, ImagesOfEveryKind) {
    expectTheSameInThreads(transformsOf<CImg1>);
    expectTheSameInThreads(transformsOf<CImg8>);
    expectTheSameInThreads(transformsOf<CImg32>);
    expectTheSameInThreads([](unsigned seed) {
        const auto image = imageOf<CImg1>(pageOf(seed));
        return Results{taken(CImg8::create(*image, nullptr, ImgAlignNone)), taken(CImg32::create(*image, RGBOrderRGB)),
                       taken(image->clone())};
    });
}

TEST(Threads, WalksOverCompressedImagesAndTheirShallowCopies) {
    expectTheSameInThreads([](unsigned seed) {
        const Picture picture = pageOf(seed);
        const G4Image image = compressed(picture, 64, 32), other = compressed(picture, kWidth, kHeight);
        CImg1G4 copy(*other);  // its background is not known yet
        Results results = transforms(*image, *other);
        for (const Picture& result : transforms(copy, *image)) results.push_back(result);
        results.push_back(taken(CImg1::create(*other, 0, 1, ImgAlignNone)));
        return results;
    });
    const G4Image shared = compressed(pageOf(1), 64, 32);
    expectTheSameInThreads([&](unsigned) {
        CImg1G4 copy(*shared);
        return transforms(copy, *shared);
    });
}

TEST(Threads, HandlesOfEveryType) {
    expectTheSameInThreads(handleOperationsOf<Bits>);
    expectTheSameInThreads(handleOperationsOf<Bytes8>);
    expectTheSameInThreads(handleOperationsOf<Bytes24>);
    expectTheSameInThreads(handleOperationsOf<Words32>);
    expectTheSameInThreads([](unsigned seed) {
        const Handle image = compressedHandle(tilesOf(pageOf(seed), 64, 32), kWidth, kHeight, 64, 32);
        Results results = resultsOf(*image);
        void* block = nullptr;
        std::uint32_t size = 0;
        TiffG4Serialize(image.get(), &block, &size);
        ImgHandle* revived = nullptr;
        TiffG4Deserialize(&revived, block);
        results.push_back(pictureOf(Handle(revived->render(revived, 75, 45, nullptr, 0, 0, 8))));
        MemFree(0, block);
        return results;
    });
}

TEST(Threads, StripsAndRowsOfTheCodec) {
    cit_enable_decode_gr4();
    cit_enable_encode_gr4();
    cit_enable_detect_changes();
    expectTheSameInThreads([](unsigned seed) {
        const auto image = imageOf<CImg1>(pageOf(seed));
        std::uint8_t* strip = nullptr;
        const auto stride = static_cast<std::int32_t>(image->getBytesPerLine());
        const std::int32_t size = create_g4_tiff_strip(image->peekData(), &strip, kWidth, stride, kHeight);
        Bytes words = exchanged(Bytes(strip, strip + size));
        MemFree(0, strip);
        Results results;
        std::vector<std::int32_t> above{0, kWidth + 1, kWidth + 1, kWidth + 1}, row;
        std::int32_t byte = 0, bit = 1;
        for (std::uint32_t y = 0; y < kHeight; ++y) {
            row.assign(kWidth + 4, 0);
            std::int32_t count = 0;
            const std::int16_t status =
                cit_decode_tiff_gr4(above.data(), static_cast<std::int32_t>(above.size()), kWidth,
                                    reinterpret_cast<std::uint16_t*>(words.data()), &byte, &bit, nullptr, row.data(),
                                    &count, static_cast<std::int32_t>(words.size()));
            EXPECT_EQ(status, 0);
            above.assign(row.begin(), row.begin() + count);
            results.push_back(asPicture(above));
        }
        return results;
    });
    cit_disable_decode_gr4();
    cit_disable_encode_gr4();
    cit_disable_detect_changes();
}

TEST(Threads, BandsOfOneViewAreItsRows) {
    std::mt19937 random(6);
    const PageSource source(randomPicture(random, 1000, 960, 30), 128, 96);
    const Page page = source.open();
    tp_view whole = viewOf(0, 0, 1000, 960, 300, 240, TP_GREY, TP_GREY8);
    Canvas canvas(whole, 0, false);
    ASSERT_EQ(tp_page_render(page.get(), &whole, 1, nullptr), TP_OK);
    for (const std::uint32_t threads : {1u, 2u, 4u}) {
        tp_view view = whole;
        Canvas joined(view, 0, false);
        std::vector<std::thread> drawing;
        for (std::uint32_t k = 0; k < threads; ++k)
            drawing.emplace_back([&, k] {
                tp_view band = view;
                band.height /= threads;
                band.top = k * band.height;
                band.out_height /= threads;
                band.pixels = joined.row(k * band.out_height);
                EXPECT_EQ(tp_page_render(page.get(), &band, 1, nullptr), TP_OK);
            });
        for (std::thread& thread : drawing) thread.join();
        EXPECT_EQ(joined.pixels(), canvas.pixels()) << threads;
    }
}

TEST(Threads, OnePageForAllThatAnyOfThemLaysOutAnew) {
    std::mt19937 random(5);
    Picture picture = randomPicture(random, 1500, 900, 8);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        if (i / 1500 % 30 > 6) picture.pixels[i] = i % 400 < 3;
    const PageSource source(picture, 0, 0);
    const Page alone = source.open(), shared = source.open();
    const std::uint64_t memory = tp_page_memory(shared.get());
    std::atomic<unsigned> runs{0};
    constexpr unsigned kAtOnce = 8;
    const auto draw = [&](unsigned seed) {
        const Page own(tp_page_retain(runs++ < kAtOnce ? alone.get() : shared.get()));
        tp_page_prepare(own.get(), nullptr);
        EXPECT_EQ(tp_page_verify(own.get(), nullptr), TP_OK);
        Results results;
        for (const std::uint32_t mode : {TP_GREY, TP_COVERAGE, TP_INK, TP_NEAREST}) {
            tp_view view = viewOf(5 * seed, 80 * seed, 1000, 300, 400, 130, mode, TP_GREY8);
            Canvas canvas(view, 0, false);
            EXPECT_EQ(tp_page_render(own.get(), &view, 1, nullptr), TP_OK);
            results.push_back(asPicture(canvas.pixels()));
        }
        return results;
    };
    expectTheSameInThreads(draw, kAtOnce);
    EXPECT_GT(tp_page_memory(shared.get()), memory);
}

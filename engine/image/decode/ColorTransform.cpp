#include "engine/image/decode/ColorTransform.h"

#include "engine/image/pixels/RowConversions.h"
#include "engine/image/pixels/SampleMath.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace pagestack {

namespace {

    template <auto release>
    struct Releaser
    {
        template <typename Resource>
        void operator()(Resource* resource) const noexcept
        {
            release(resource);
        }
    };
    using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, Releaser<cmsDeleteContext>>;
    using Profile = std::unique_ptr<std::remove_pointer_t<cmsHPROFILE>, Releaser<cmsCloseProfile>>;
    using Transform
        = std::unique_ptr<std::remove_pointer_t<cmsHTRANSFORM>, Releaser<cmsDeleteTransform>>;

    /// Null when it is broken or of another colour space.
    Profile openProfile(cmsContext context, const QByteArray& bytes, cmsColorSpaceSignature space)
    {
        if (bytes.isEmpty())
            return {};
        Profile profile(cmsOpenProfileFromMemTHR(context, bytes.constData(),
                                                 static_cast<cmsUInt32Number>(bytes.size())));
        if (profile && cmsGetColorSpace(profile.get()) != space)
            profile.reset();
        return profile;
    }

    Profile openSource(cmsContext context, SourceColor from, const QByteArray& bytes)
    {
        return from == SourceColor::Cmyk ? openProfile(context, bytes, cmsSigCmykData)
                                         : Profile(cmsCreateLab4ProfileTHR(context, nullptr));
    }

    template <typename Sample>
    void plainCmykToRgb(const std::uint8_t* from, std::uint8_t* to, int pixels)
    {
        constexpr std::uint64_t top = static_cast<Sample>(~Sample { 0 });
        for (int i = 0; i < pixels; ++i) {
            Sample inks[4];
            Sample rgb[3];
            std::memcpy(inks, from, sizeof inks);
            for (int c = 0; c < 3; ++c)
                rgb[c] = static_cast<Sample>(((top - inks[c]) * (top - inks[3]) + top / 2) / top);
            std::memcpy(to, rgb, sizeof rgb);
            from += sizeof inks;
            to += sizeof rgb;
        }
    }

    /// An L*a*b* sample of a TIFF page in the 16-bit encoding of version 4 profiles: L* 0..65535
    /// for 0..100, a* and b* 257 steps a unit from -128 on.
    std::uint16_t labSample(SourceColor from, int bits, int channel, const std::uint8_t* at)
    {
        if (bits == 8) {
            const unsigned shift = from == SourceColor::CieLab && channel > 0 ? 128U : 0U;
            return static_cast<std::uint16_t>(((*at + shift) & 255U) * 257U);
        }
        const auto raw = loadSample<std::uint16_t>(at);
        if (from == SourceColor::IccLab) // version 2: 65280 for 100, 256 steps a unit
            return static_cast<std::uint16_t>(std::min(65535U, (raw * 65535U + 32640U) / 65280U));
        if (channel == 0)
            return raw;
        const auto signedValue = static_cast<std::int16_t>(raw); // 256 steps a unit
        return static_cast<std::uint16_t>(
            std::min(65535.0, (static_cast<double>(signedValue) / 256.0 + 128.0) * 257.0 + 0.5));
    }

    struct Engine
    {
        Context context;
        Transform transform;
        std::vector<std::uint16_t> lab; ///< of a row
    };

    /// Gray with the curve of sRGB (IEC 61966-2-1).
    Profile graySrgb(cmsContext context)
    {
        const std::array<double, 5> curve { 2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045 };
        cmsToneCurve* tone = cmsBuildParametricToneCurve(context, 4, curve.data());
        Profile profile(cmsCreateGrayProfileTHR(context, cmsD50_xyY(), tone));
        cmsFreeToneCurve(tone);
        return profile;
    }

    /// Null when the profile is not of use for such pixels.
    std::shared_ptr<Engine> srgbEngine(const QByteArray& bytes, ColorModel model, int bits,
                                       bool hasAlpha)
    {
        const bool isGray = model == ColorModel::Gray;
        const auto engine = std::make_shared<Engine>();
        engine->context.reset(cmsCreateContext(nullptr, nullptr));
        if (!engine->context)
            throw std::bad_alloc();
        cmsContext context = engine->context.get();
        const Profile source = openProfile(context, bytes, isGray ? cmsSigGrayData : cmsSigRgbData);
        constexpr std::array classes { cmsSigInputClass, cmsSigDisplayClass, cmsSigOutputClass,
                                       cmsSigColorSpaceClass };
        if (!source || std::ranges::find(classes, cmsGetDeviceClass(source.get())) == classes.end())
            return nullptr;
        const Profile target
            = isGray ? graySrgb(context) : Profile(cmsCreate_sRGBProfileTHR(context));
        if (!target)
            throw std::bad_alloc();
        const cmsUInt32Number format = COLORSPACE_SH(isGray ? PT_GRAY : PT_RGB)
            | CHANNELS_SH(isGray ? 1U : 3U) | BYTES_SH(static_cast<unsigned>(bits / 8))
            | EXTRA_SH(hasAlpha ? 1U : 0U);
        // The tables that lcms makes of a transform otherwise are too coarse for 16 bits, and for
        // the steep start of a curve of gray.
        engine->transform.reset(cmsCreateTransformTHR(
            context, source.get(), format, target.get(), format, INTENT_RELATIVE_COLORIMETRIC,
            cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_COPY_ALPHA
                | (bits == 8 && !isGray ? cmsFLAGS_HIGHRESPRECALC : cmsFLAGS_NOOPTIMIZE)));
        return engine->transform ? engine : nullptr;
    }

    /// Null as srgbEngine.
    RowFunction srgbStep(const QByteArray& profile, ColorModel model, int bits, bool hasAlpha)
    {
        const std::shared_ptr<Engine> engine = srgbEngine(profile, model, bits, hasAlpha);
        if (!engine)
            return {};
        return [engine](const std::uint8_t* from, std::uint8_t* to, int pixels) {
            cmsDoTransform(engine->transform.get(), from, to, static_cast<cmsUInt32Number>(pixels));
        };
    }

    /// The same for gray of 8 bits, which may have an alpha.
    RowFunction grayTable(const QByteArray& profile, int channels)
    {
        const RowFunction step = srgbStep(profile, ColorModel::Gray, 8, false);
        if (!step)
            return {};
        std::array<std::uint8_t, 256> table {};
        std::array<std::uint8_t, 256> levels {};
        std::iota(levels.begin(), levels.end(), std::uint8_t { 0 });
        step(levels.data(), table.data(), 256);
        return [table, channels](const std::uint8_t* from, std::uint8_t* to, int pixels) {
            for (int i = 0; i < pixels; ++i, from += channels, to += channels) {
                to[0] = table[from[0]];
                if (channels == 2)
                    to[1] = from[1];
            }
        };
    }

    std::unique_ptr<RowSource> withSrgbPalette(std::unique_ptr<RowSource> rows,
                                               const QByteArray& profile)
    {
        const RowFunction step = srgbStep(profile, ColorModel::Rgb, 8, false);
        if (!step)
            return rows;
        PixelLayout layout = rows->layout();
        const std::vector<RgbColor> colors = layout.palette;
        for (std::size_t i = 0; i < colors.size(); ++i)
            step(colors[i].data(), layout.palette[i].data(), 1);
        const auto bytes = static_cast<std::size_t>(rows->rowBytes());
        return steppedRows(std::move(rows), layout,
                           [bytes](const std::uint8_t* from, std::uint8_t* to, int) {
                               std::memcpy(to, from, bytes);
                           });
    }

    /// Samples all over the range, `channels` a colour.
    std::vector<std::uint16_t> testColors(int channels)
    {
        constexpr int steps = 9;
        std::vector<std::uint16_t> samples;
        const auto level
            = [](int step, int last) { return static_cast<std::uint16_t>(65535 * step / last); };
        if (channels == 1)
            for (int i = 0; i < 256; ++i)
                samples.push_back(level(i, 255));
        else
            for (int i = 0; i < steps * steps * steps; ++i)
                for (const int step : { i / steps / steps, i / steps % steps, i % steps })
                    samples.push_back(level(step, steps - 1));
        return samples;
    }

} // namespace

ProfileKind profileKind(const QByteArray& profile, ColorModel model)
{
    const std::shared_ptr<Engine> engine = srgbEngine(profile, model, 16, false);
    if (!engine)
        return ProfileKind::Unusable;
    const int channels = model == ColorModel::Gray ? 1 : 3;
    const std::vector<std::uint16_t> from = testColors(channels);
    std::vector<std::uint16_t> to(from.size());
    cmsDoTransform(engine->transform.get(), from.data(), to.data(),
                   static_cast<cmsUInt32Number>(from.size() / static_cast<std::size_t>(channels)));
    constexpr int stepOf8Bits = 257;
    const bool isSame = std::equal(from.begin(), from.end(), to.begin(), [](int one, int other) {
        return std::abs(one - other) <= stepOf8Bits;
    });
    return isSame ? ProfileKind::Srgb : ProfileKind::Other;
}

bool isCmykProfile(const QByteArray& profile)
{
    const Context context(cmsCreateContext(nullptr, nullptr));
    return context && openProfile(context.get(), profile, cmsSigCmykData);
}

QString profileName(const QByteArray& profile)
{
    constexpr int mostLetters = 60;
    const Context context(cmsCreateContext(nullptr, nullptr));
    if (!context)
        throw std::bad_alloc();
    const Profile opened(cmsOpenProfileFromMemTHR(context.get(), profile.constData(),
                                                  static_cast<cmsUInt32Number>(profile.size())));
    std::array<wchar_t, mostLetters + 1> text {};
    if (opened)
        cmsGetProfileInfo(opened.get(), cmsInfoDescription, "en", "US", text.data(),
                          sizeof(wchar_t) * mostLetters);
    QString name = QString::fromWCharArray(text.data());
    name.removeIf([](QChar letter) { return !letter.isPrint() && !letter.isSpace(); });
    return name.simplified();
}

std::unique_ptr<RowSource> srgbRows(std::unique_ptr<RowSource> rows, const QByteArray& profile)
{
    const ColorModel model = rows->layout().model;
    if (model == ColorModel::Gray && rows->layout().bitsPerSample == 1)
        return rows;
    if (model == ColorModel::Palette)
        return withSrgbPalette(std::move(rows), profile);
    // Colours that are multiplied by alpha are none that a profile describes; see adaptRows.
    rows = adaptRows(std::move(rows), { .takesAlpha = true, .takes16Bits = true });
    const PixelLayout layout = rows->layout();
    RowFunction step = model == ColorModel::Gray && layout.bitsPerSample == 8
        ? grayTable(profile, layout.channels())
        : srgbStep(profile, model, layout.bitsPerSample, layout.alpha != AlphaKind::None);
    return step ? steppedRows(std::move(rows), layout, std::move(step)) : std::move(rows);
}

RowFunction colorTransform(SourceColor from, int bits, const QByteArray& profile)
{
    const bool isCmyk = from == SourceColor::Cmyk;
    const auto engine = std::make_shared<Engine>();
    engine->context.reset(cmsCreateContext(nullptr, nullptr));
    if (!engine->context)
        throw std::bad_alloc();
    const Profile target(cmsCreate_sRGBProfileTHR(engine->context.get()));
    // An L*a*b* transform is worked out for every pixel: the table that lcms makes of it otherwise
    // misses white and black by a step, and strong colours by more.
    if (const Profile source = openSource(engine->context.get(), from, profile))
        engine->transform.reset(cmsCreateTransformTHR(
            engine->context.get(), source.get(),
            !isCmyk         ? TYPE_Lab_16
                : bits == 8 ? TYPE_CMYK_8
                            : TYPE_CMYK_16,
            target.get(), bits == 8 ? TYPE_RGB_8 : TYPE_RGB_16, INTENT_RELATIVE_COLORIMETRIC,
            isCmyk ? cmsFLAGS_BLACKPOINTCOMPENSATION : cmsFLAGS_NOOPTIMIZE));
    if (!engine->transform && !isCmyk)
        throw std::runtime_error("its L*a*b* colours cannot be converted");
    if (!engine->transform)
        return bits == 8 ? plainCmykToRgb<std::uint8_t> : plainCmykToRgb<std::uint16_t>;
    return [=](const std::uint8_t* row, std::uint8_t* to, int pixels) {
        if (!isCmyk) {
            engine->lab.resize(static_cast<std::size_t>(pixels) * 3);
            const auto sampleBytes = static_cast<std::size_t>(bits / 8);
            for (std::size_t i = 0; i < engine->lab.size(); ++i)
                engine->lab[i]
                    = labSample(from, bits, static_cast<int>(i % 3), row + i * sampleBytes);
            row = reinterpret_cast<const std::uint8_t*>(engine->lab.data());
        }
        cmsDoTransform(engine->transform.get(), row, to, static_cast<cmsUInt32Number>(pixels));
    };
}

} // namespace pagestack

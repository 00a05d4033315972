#include "engine/image/decode/ColorTransform.h"

#include "engine/image/pixels/SampleMath.h"

#include <lcms2.h>

#include <cstring>
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

    Profile openSource(cmsContext context, SourceColor from, const QByteArray& bytes)
    {
        if (from != SourceColor::Cmyk)
            return Profile(cmsCreateLab4ProfileTHR(context, nullptr));
        if (bytes.isEmpty())
            return {};
        Profile profile(cmsOpenProfileFromMemTHR(context, bytes.constData(),
                                                 static_cast<cmsUInt32Number>(bytes.size())));
        if (profile && cmsGetColorSpace(profile.get()) != cmsSigCmykData)
            profile.reset();
        return profile;
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

} // namespace

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

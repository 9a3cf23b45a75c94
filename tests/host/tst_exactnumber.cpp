#include "host/exactnumber.h"
#include "testing.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <random>

class TestExactNumber : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The fast path against the one that is right by definition: decimals, their neighbours, and any bits at all.
    void sameAsToChars()
    {
        std::mt19937_64 random(1);
        const auto check = [](double value) {
            std::array<char, Host::maxNumberLength> text{};
            const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
            const QByteArray expected(text.data(), end - text.data());
            if (Host::exactNumber(value) != expected)
                QFAIL("wrote " + Host::exactNumber(value) + ", expected " + expected);
        };
        for (int i = 0; i < 200000 && !QTest::currentTestFailed(); ++i) {
            const int places = i % 9;
            const double decimal =
                std::round(std::ldexp(static_cast<double>(random() >> 11), -53) * std::pow(10.0, i % 14)) /
                std::pow(10.0, places);
            for (const double value : {decimal, -decimal, std::nextafter(decimal, 1e300), std::nextafter(decimal, -1.0),
                                       std::bit_cast<double>(random())})
                check(value);
        }
        for (const double edge : {0.0, 0.001, 0.0009999, 100000.0, 99999.999999, 99999.9999995})
            check(edge);
    }
};

QTEST_APPLESS_MAIN(TestExactNumber)
#include "tst_exactnumber.moc"

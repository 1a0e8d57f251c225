#include "platform/process/Frames.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kLongest = 10;

QByteArray frameOf(quint8 kind, bool more, const QByteArray &payload)
{
    QByteArray bytes = QByteArray(kFrameHeaderSize, '\0') + payload;
    setFrameHeader(bytes, kind, more);
    return bytes;
}

QByteArray described(const Frame &frame)
{
    return QByteArray::number(frame.kind) + (frame.more ? '+' : ' ') + frame.payload.toByteArray();
}

} // namespace

class FramesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void cutter_portionsOfAnySize_findsTheSameFrames()
    {
        const QByteArray bytes =
            frameOf(1, false, "abc") + frameOf(255, true, {}) + frameOf(0, true, "0123456789");
        for (qsizetype portion = 1; portion <= bytes.size(); ++portion) {
            FrameCutter cutter(kLongest);
            QByteArrayList found;
            for (qsizetype i = 0; i < bytes.size(); i += portion) {
                cutter.append(bytes.mid(i, portion));
                for (auto frame = cutter.next(); frame && *frame; frame = cutter.next())
                    found << described(**frame);
            }
            QCOMPARE(found, (QByteArrayList{"1 abc", "255+", "0+0123456789"}));
        }
    }

    void cutter_cutOffAnywhere_waitsForTheRest()
    {
        const QByteArray bytes = frameOf(1, false, "abc");
        for (qsizetype size = 0; size < bytes.size(); ++size) {
            FrameCutter cutter(kLongest);
            cutter.append(bytes.first(size));
            const auto frame = cutter.next();
            QVERIFY(frame && !*frame);
        }
    }

    void cutter_invalidHeader_failsAtOnceAndFromThenOn_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<bool>("isTooLong");
        QTest::newRow("unknown flag") << "\1\2\0\0\0\0\0\0"_ba << false;
        QTest::newRow("first zero set") << "\1\0\1\0\0\0\0\0"_ba << false;
        QTest::newRow("second zero set") << "\1\0\0\1\0\0\0\0"_ba << false;
        QTest::newRow("one byte too long") << frameOf(1, false, "0123456789a").first(8) << true;
        QTest::newRow("longest length") << "\1\0\0\0\xff\xff\xff\xff"_ba << true;
    }

    void cutter_invalidHeader_failsAtOnceAndFromThenOn()
    {
        QFETCH(const QByteArray, header);
        QFETCH(const bool, isTooLong);
        FrameCutter cutter(kLongest);
        cutter.append(frameOf(1, false, "good") + header);
        QVERIFY(cutter.next());
        for (int attempt = 0; attempt < 2; ++attempt) {
            const auto frame = cutter.next();
            QVERIFY(!frame);
            QCOMPARE(frame.error() == FrameError::TooLong, isTooLong);
            cutter.append("more");
        }
    }

    void number_appendedAndTaken_isTheSame()
    {
        QByteArray bytes;
        appendNumber(bytes, qint64{-2});
        appendNumber(bytes, quint16{0xABCD});
        appendNumber(bytes, 0.5);
        QByteArrayView rest = bytes;
        QCOMPARE(takeNumber<qint64>(rest), std::optional(qint64{-2}));
        QCOMPARE(takeNumber<quint16>(rest), std::optional(quint16{0xABCD}));
        QCOMPARE(takeNumber<double>(rest), std::optional(0.5));
        QVERIFY(rest.isEmpty());
    }

    void number_tooFewBytes_takesNone()
    {
        const QByteArray bytes(3, 'x');
        QByteArrayView rest = bytes;
        QVERIFY(!takeNumber<quint32>(rest));
        QCOMPARE(rest.size(), 3);
        QVERIFY(takeNumber<quint8>(rest));
        QCOMPARE(rest.size(), 2);
    }
};

QTEST_APPLESS_MAIN(FramesTest)
#include "FramesTest.moc"

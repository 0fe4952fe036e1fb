#include "largetexts.h"

namespace kestrine::testing {

namespace {

void addFile(QByteArray &diff, const QByteArray &name, int hunks)
{
    diff += "diff --git a/" + name + " b/" + name + "\nindex 83db48f..bf269f4 100644\n--- a/" +
            name + "\n+++ b/" + name + "\n";
    for (int hunk = 0; hunk < hunks; ++hunk) {
        diff += "@@ -" + QByteArray::number(hunk * 40 + 1) + ",20 +" +
                QByteArray::number(hunk * 40 + 1) + ",21 @@ void function" +
                QByteArray::number(hunk) + "()\n";
        for (int line = 0; line < 20; ++line) {
            const char prefix = line % 7 == 3 ? '-' : (line % 5 == 1 ? '+' : ' ');
            diff += prefix;
            diff += "    const auto value = compute(input, " + QByteArray::number(line) +
                    "); // note\n";
        }
    }
}

} // namespace

QByteArray largeDiff(qsizetype targetBytes, const NamedFile &named)
{
    QByteArray diff;
    diff.reserve(targetBytes + named.hunks * 1200 + 4096);
    int file = 0;
    const auto fillTo = [&](qsizetype size) {
        while (diff.size() < size)
            addFile(diff, "src/module" + QByteArray::number(file++) + "/source.cpp", 10);
    };
    fillTo(qsizetype(double(targetBytes) * named.at));
    addFile(diff, named.name, named.hunks);
    fillTo(targetBytes);
    return diff;
}

QByteArray largeLog(qsizetype targetBytes)
{
    QByteArray log;
    log.reserve(targetBytes + 256);
    for (int i = 0; log.size() < targetBytes; ++i) {
        log += "2024-05-01T10:21:" + QByteArray::number(10 + i % 50) + ".1234567Z ";
        if (i % 9 == 0)
            log += "\x1b[36m::group::Run step " + QByteArray::number(i) + "\x1b[0m\n";
        else if (i % 13 == 0)
            log += "\x1b[31mFAIL\x1b[0m\tnorrum.com/pkg/module" + QByteArray::number(i) + "\n";
        else
            log += "ok  \tnorrum.com/harbor/pkg/module" + QByteArray::number(i) +
                   "\t0.412s coverage: 81.3% of statements\n";
    }
    return log;
}

} // namespace kestrine::testing

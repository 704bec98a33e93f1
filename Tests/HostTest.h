/// \file
/// What the tests of the hosts share: a folder to work in and runs of the host.
#pragma once

#include <gtest/gtest.h>

#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <tuple>

/// The largest difference of two pictures' colour values, or 256 if their sizes differ.
inline int difference(QImage const& a, QImage const& b)
{
    if (a.size() != b.size() || a.isNull())
        return 256;
    QImage const p = a.convertToFormat(QImage::Format_RGBX8888), q = b.convertToFormat(QImage::Format_RGBX8888);
    int largest = 0;
    for (qsizetype i = 0; i < p.sizeInBytes(); ++i)
        largest = std::max(largest, std::abs(p.constBits()[i] - q.constBits()[i]));
    return largest;
}

/// A folder of its own is the current one as long as the test lasts.
class HostTest : public testing::Test
{
  protected:
    /// The exit code and what is printed on the output and the error stream.
    using Outcome = std::tuple<int, std::string, std::string>;

    explicit HostTest(QString program = "") : _program(std::move(program)) { QDir::setCurrent(_folder.path()); }
    ~HostTest() override { QDir::setCurrent(QDir::rootPath()); }

    static void write(QString const& name, QByteArray const& bytes)
    {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    static void writePicture(QString const& name, QColor const& color, QSize const& size)
    {
        QImage picture(size, color.alpha() < 255 ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        picture.fill(color);
        ASSERT_TRUE(picture.save(name));
    }

    static QStringList names(QString const& folder = ".")
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    /// \param launcher  a program, and arguments of its own, that runs the host
    Outcome run(QString const& arguments, QString const& launcher = "") const
    {
        QStringList words = launcher.split(' ', Qt::SkipEmptyParts) + QStringList(_program) + arguments.split(' ');
        QProcess process;
        process.setProcessEnvironment(_environment);
        process.start(words.takeFirst(), words);
        EXPECT_TRUE(process.waitForFinished(120000));
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    /// Runs the host with wrong arguments, of which it complains in one line and then leaves no trace.
    void expectComplaint(QString const& arguments, std::string const& complaint) const
    {
        QStringList const before = names();
        EXPECT_EQ(run(arguments), Outcome(2, "", complaint + "\n")) << arguments.toStdString();
        EXPECT_EQ(names(), before) << arguments.toStdString();
    }

    /// Runs the host with arguments that are right where the system gives too little.
    void expectNeeds(QString const& arguments) const
    {
        write("full", "exec \"$@\" >/dev/full");
        std::string const name = QFileInfo(_program).fileName().toStdString();
        std::tuple<char const*, QString, std::string> const rows[] = {
            {"prlimit --stack=1000000000000", arguments, "can't start a thread: Resource temporarily unavailable"},
#ifndef __SANITIZE_ADDRESS__ // which needs files of its own
            {"prlimit --nofile=6", arguments, "can't open the files that are needed: Too many open files"},
#endif
            {"sh full", "--help", "can't write to the standard output stream: No space left on device"},
        };
        for (auto const& [launcher, words, complaint] : rows)
            EXPECT_EQ(run(words, launcher), Outcome(1, "", name + ": " + complaint + "\n")) << launcher;
    }

    QTemporaryDir _folder;
    QString _program;
    QProcessEnvironment _environment = QProcessEnvironment::systemEnvironment();
};

#include "Model/Commands/ProgramTrial.h"

#include "Model/Text/Numbers.h"
#include "Model/Text/Utf8.h"

#include <fmt/format.h>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>

namespace vantoro {

namespace {

/// More than any list of processes; a program that prints without end must not fill the memory.
constexpr qsizetype mostBytes = qsizetype{64} * 1024 * 1024;

ProgramTrial judgeOutput(const QByteArray& output) {
    if (output.isEmpty())
        return {false, "ran but produced no output"};
    const std::string_view text(output.data(), static_cast<std::size_t>(output.size()));
    if (validUtf8Length(text) == text.size()) {
        for (std::size_t at = 0; at < text.size();) {
            const std::string_view line = text.substr(at, text.find('\n', at) - at);
            if (line.starts_with("Processes:"))
                return {true, std::string(trimmed(line))};
            at += line.size() + 1;
        }
    }
    return {true, fmt::format("{} bytes of output", text.size())};
}

} // namespace

ProgramTrial canRun(const ProgramCommand& command, std::chrono::milliseconds limit) {
    const QFileInfo file(QString::fromStdString(command.program));
    if (!file.exists())
        return {false, "not present on this Mac"};
    if (!file.isExecutable())
        return {false, "present, but this Mac will not let you execute it"};

    QStringList arguments;
    for (const std::string& argument : command.arguments)
        arguments.append(QString::fromStdString(argument));
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(file.filePath(), arguments);
    if (!process.waitForStarted())
        return {false, "cannot execute — " + process.errorString().toStdString()};

    const QDeadlineTimer deadline(limit);
    QByteArray output;
    while (process.state() != QProcess::NotRunning && !deadline.hasExpired() && output.size() <= mostBytes) {
        // Once its output is closed there is only its end to wait for.
        if (!process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            process.waitForFinished(static_cast<int>(deadline.remainingTime()));
        output += process.readAllStandardOutput();
    }
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
        return {false, output.size() > mostBytes ? "printed without end" : "did not finish in time"};
    }
    output += process.readAllStandardOutput();
    if (process.exitStatus() == QProcess::CrashExit)
        return {false, "killed by a signal while running"};
    if (process.exitCode() != 0)
        return {false, fmt::format("exited with status {}", process.exitCode())};
    return judgeOutput(output);
}

} // namespace vantoro

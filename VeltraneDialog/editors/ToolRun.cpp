#include "VeltraneDialog/editors/ToolRun.h"

#include <QFile>
#include <utility>

#include "VeltraneDialog/editors/ConnectionTry.h"

namespace Veltrane::ODBC {

namespace {

/// How long the tool can take to end, in milliseconds. It ends the driver first.
constexpr int GRACE = 2000;

}  // namespace

ToolRun::ToolRun() {
    QObject::connect(&m_process, &QProcess::finished, &m_process,
                     [this](int in_code, QProcess::ExitStatus in_status) {
                         Finish(in_status == QProcess::NormalExit ? in_code : -1, {});
                     });
    QObject::connect(&m_process, &QProcess::errorOccurred, &m_process,
                     [this](QProcess::ProcessError in_error) {
                         if (in_error == QProcess::FailedToStart) {
                             Finish(-1, m_process.errorString());
                         }
                     });
}

ToolRun::~ToolRun() {
    m_process.disconnect();
    if (m_process.state() == QProcess::NotRunning) return;
    m_process.terminate();
    if (!m_process.waitForFinished(GRACE)) m_process.kill();
    m_process.waitForFinished(GRACE);
}

void ToolRun::Start(const QStringList& in_arguments, const QByteArray& in_input,
                    std::function<void(const ToolResult&)> in_done) {
    m_done = std::move(in_done);
    m_process.setProgram(QFile::decodeName(FindTool().c_str()));
    m_process.setArguments(in_arguments);
    m_process.start();
    m_process.write(in_input);
    m_process.closeWriteChannel();
}

void ToolRun::Cancel() { m_process.terminate(); }

void ToolRun::Finish(int in_code, const QString& in_problem) {
    if (!m_done) return;
    ToolResult result;
    result.m_code = in_code;
    result.m_output = m_process.readAllStandardOutput();
    constexpr QLatin1String NAME("veltrane-dsn: ");
    QString errors = QString::fromUtf8(m_process.readAllStandardError());
    if (errors.startsWith(NAME)) errors.remove(0, NAME.size());
    const QString output = QString::fromUtf8(result.m_output);
    result.m_text = (in_problem + (output.isEmpty() ? errors : output)).trimmed();
    std::exchange(m_done, nullptr)(result);
}

}  // namespace Veltrane::ODBC

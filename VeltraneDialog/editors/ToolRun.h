/// veltrane-dsn in the background of a window: one run at a time.
#ifndef VELTRANEDIALOG_EDITORS_TOOLRUN_H
#define VELTRANEDIALOG_EDITORS_TOOLRUN_H

#include <QProcess>
#include <functional>

namespace Veltrane::ODBC {

struct ToolResult {
    int m_code = -1;  ///< as the tool ends; -1 when it could not be started or was killed
    QByteArray m_output;
    QString m_text;  ///< its output, else its errors, for people; empty when it was cancelled
};

class ToolRun {
public:
    ToolRun();
    ToolRun(const ToolRun&) = delete;
    ToolRun& operator=(const ToolRun&) = delete;
    /// Kills what still runs; nobody is told then.
    ~ToolRun();

    /// @param in_input  for its standard input
    /// @param in_done  called once, from the event loop
    void Start(const QStringList& in_arguments, const QByteArray& in_input,
               std::function<void(const ToolResult&)> in_done);
    /// Ends the run, which is done then.
    void Cancel();
    bool IsRunning() const { return static_cast<bool>(m_done); }

private:
    void Finish(int in_code, const QString& in_problem);

    QProcess m_process;
    std::function<void(const ToolResult&)> m_done;
};

}  // namespace Veltrane::ODBC

#endif

/// Runs veltrane-dsn in the background of a window, one run at a time.
#ifndef VELTRANEDIALOG_EDITORS_TOOLRUN_H
#define VELTRANEDIALOG_EDITORS_TOOLRUN_H

#include <QProcess>
#include <functional>

namespace Veltrane::ODBC {

struct ToolResult {
    int m_code = -1;  ///< the exit status; -1 when it could not be started or was killed
    QByteArray m_output;
    QString m_text;  ///< its output, else its errors, to be shown; empty when cancelled
};

class ToolRun {
public:
    ToolRun();
    ToolRun(const ToolRun&) = delete;
    ToolRun& operator=(const ToolRun&) = delete;
    /// Kills a running tool without calling in_done.
    ~ToolRun();

    /// @param in_input  for its standard input
    /// @param in_done  called once, from the event loop
    void Start(const QStringList& in_arguments, const QByteArray& in_input,
               std::function<void(const ToolResult&)> in_done);
    /// Ends the run and then calls in_done.
    void Cancel();
    bool IsRunning() const { return static_cast<bool>(m_done); }

private:
    void Finish(int in_code, const QString& in_problem);

    QProcess m_process;
    std::function<void(const ToolResult&)> m_done;
};

}  // namespace Veltrane::ODBC

#endif

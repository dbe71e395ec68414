/// The editors' texts as QString.
#ifndef VELTRANEDIALOG_EDITORS_QTTEXT_H
#define VELTRANEDIALOG_EDITORS_QTTEXT_H

#include <QString>

#include "VeltraneDialog/editors/Texts.h"

namespace Veltrane::ODBC {

inline QString Translated(const char* in_text) { return QString::fromUtf8(Translate(in_text)); }

}  // namespace Veltrane::ODBC

#endif

#pragma once

#include "console/Login_Form.h"

#include <QString>

// The operator at the login dialog's first show: extension 8001, password
// 1234, the simulated exchange on this machine at `port`. Login is not pressed.
inline void TypeLogin(TLogin_Form &login, quint16 port) {
  login.FormShow(); // the first show fills the boxes from the settings; then we type
  login.TelNo_TeComboBox = QStringLiteral("8001");
  login.Pwd_TeMaskEdit = QStringLiteral("1234");
  login.HostIP_TeMaskEdit = QStringLiteral("127.0.0.1");
  login.HostPort_TeMaskEdit = QString::number(port);
}

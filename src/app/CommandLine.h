#pragma once

#include <QString>

// trunkdesk [--home DIR] [--login] [--udp-port N] [--help] [--version]
struct TCommandLine {
  bool Help = false;
  bool Version = false;
  bool Login = false;     // press Login at the dialog's first show
  bool Demo = false;      // a simulated hotel exchange inside the process
  quint16 UdpPort = 5009; // where the exchange's pushes arrive
  QString Screenshot;     // a PNG of the main window, taken a few seconds after start
  QString Home;           // empty: the executable's folder
  QString Error;          // set when the line can't be understood
};

TCommandLine ParseCommandLine(int argc, char **argv);
QString UsageText();
QString VersionText(); // "Trunkdesk ver5.2"

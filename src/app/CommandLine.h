#pragma once

#include <QString>

// trunkdesk [--home DIR] [--login] [--udp-port N] [--help] [--version]
// trunkdesk [--home DIR] --copy-store FROM TO [--replace]
struct TCommandLine {
  bool Help = false;
  bool Version = false;
  bool Login = false;     // press Login at the dialog's first show
  bool Demo = false;      // a simulated hotel exchange inside the process
  quint16 UdpPort = 5009; // where the exchange's pushes arrive
  QString Screenshot;     // a PNG of the main window, taken a few seconds after start
  QString Home;           // empty: the executable's folder
  // --copy-store FROM TO: copy one store into another and exit (StoreCopy.h
  // says how stores are named); --replace lets it overwrite a target with data.
  QString CopyFrom;
  QString CopyTo;
  bool Replace = false;
  QString Error;          // set when the line can't be understood
};

TCommandLine ParseCommandLine(int argc, char **argv);
QString UsageText();
QString VersionText(); // "Trunkdesk ver5.2"

// The board's layout file: any bytes as ini/PhonePanels.xml are loaded over a
// table of reported devices and the layout saved again.
#include "FuzzHome.h"
#include "FuzzTarget.h"

#include "devices/PhoneBoard.h"
#include "link/SysParam.h"

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  FuzzHome::Start(argc, argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  SysParam().MyID = 65535; // no session: the board sends nothing
  TCallControlDev table;
  table.ParentWidth = 755;
  for (int id : {0, 1, 2, 30, 3071})
    table.PortsID_ComboBox << QString::number(id);
  TNetModule net;
  TPhoneBoard board(table, net);
  FuzzHome::Write(QStringLiteral("ini/PhonePanels.xml"),
                  QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
  if (board.LoadPhones_tefxButtonClick()) {
    table.Relayout();
    board.savePhones_tefxButtonClick();
  }
  FuzzHome::ForgetLog();
  return 0;
}

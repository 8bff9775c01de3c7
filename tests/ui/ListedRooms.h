#pragma once

#include "console/Main_Form.h"
#include "devices/CallControlDev.h"
#include "guest/ExtsView.h"

#include <QString>

// The extension list at first show with `count` rooms 8001, 8002, ... on
// devices 0, 1, ..., as the enumeration would have added them.
inline void ListRooms(TMain_Form &main, int count) {
  TExtsView &exts = main.ExtsView();
  exts.ExtsView_Init();
  for (int id = 0; id < count; ++id) {
    TPhoneTis *p = main.CallControlDev().Device(id);
    p->DevType = 1;
    p->TelNos = QStringLiteral("800%1").arg(id + 1);
    exts.Ext_AddRow(id);
  }
}

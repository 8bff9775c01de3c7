#pragma once

#include "support/FormLogic.h"

#include <QStringList>

struct TUserInfoRecord;

// The logged-in extension's data and its feature codes, as the exchange sends them.
class TUserInfo_Form : public TFormLogic {
  Q_OBJECT

public:
  explicit TUserInfo_Form(QObject *parent = nullptr) : TFormLogic("TUserInfo_Form", parent) {}

  QStringList Memo1; // one line each: number, name, port, description, rights
  QString Memo2;     // the feature code list, whole
  QString Memo2_Title = QStringLiteral("功能码列表");

  void Fill(const TUserInfoRecord &info);
};

#include "console/UserInfo_Form.h"

#include "link/Public_Unit.h"
#include "support/LanguagePack.h"

void TUserInfo_Form::Fill(const TUserInfoRecord &info) {
  Memo1 = {LangFormat(284, {info.TelNo}), LangFormat(285, {info.UserName}),
           LangFormat(286, {info.Port}), LangFormat(287, {info.Description}),
           LangText(info.Admin != 0 ? 289 : 288)};
  Memo2 = info.Features;
}

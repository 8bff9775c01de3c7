// Text typed into the contact searches or carried in as a caller number: the
// statement translator takes it, every search runs without a store error, and a
// contact stored with the text is found by it.
#include "FuzzConsole.h"
#include "FuzzHome.h"
#include "FuzzTarget.h"

#include "console/Main_Form.h"
#include "directory/DirectoryPages.h"
#include "directory/JetSql.h"
#include "directory/StoreError.h"
#include "directory/SysDM_Unit.h"

#include <cstdio>
#include <cstdlib>

namespace {
[[noreturn]] void Fail(const char *what, const QString &text) {
  std::fprintf(stderr, "%s: %s\n", what, qUtf8Printable(text));
  std::abort();
}

void ExpectFound(TDirectoryPages &pages, const char *search, const QString &text) {
  if (pages.MainInfo_DBAdvStringGrid.rowCount() < 1)
    Fail(search, text);
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  FuzzHome::Start(argc, argv);
  FuzzConsole();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzConsoleOpenSession();
  const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
  TranslateJet(text);
  TranslateJet(text, SqlTarget::Postgres);
  HasSecondStatement(text);

  TDirectoryPages &pages = FuzzConsole().Main()->Pages();
  // Only a text an operator could type and a search could match is held to
  // finding itself: searches trim the box, and the book ignores empty boxes.
  const QString typed = text.trimmed();
  const bool checkable = !typed.isEmpty() && typed == text && !text.contains(QChar(0));
  try {
    Sys_DM().Execute(QStringLiteral("delete from MainInfo"));
    TMaininfoRecord contact;
    contact.Name = text;
    contact.BranchTel = text;
    contact.Phone1 = text;
    pages.AddMainInfo(contact);

    pages.Find_Name_TeSComboBox = text;
    pages.FindName_TeButtonClick();
    if (checkable)
      ExpectFound(pages, "name search", text);
    pages.Find_BranchTel_TeSComboBox = text;
    pages.find_BranchTel_TeButtonClick();
    if (checkable)
      ExpectFound(pages, "extension search", text);
    pages.Find_Name_Check = true;
    pages.Find_Name_ComboBox = text;
    pages.LMDButton28Click();
    if (checkable)
      ExpectFound(pages, "and search", text);
    pages.LMDButton38Click();
    if (checkable)
      ExpectFound(pages, "or search", text);
    pages.ShowCallerInfo(QStringLiteral("Phone1"), text);
    if (checkable && pages.CurrentConID < 0)
      Fail("caller lookup", text);
  } catch (const EDatabaseError &error) {
    Fail("store error", error.Message() + QStringLiteral(" for ") + text);
  }
  FuzzHome::ForgetLog();
  return 0;
}

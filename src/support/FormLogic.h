#pragma once

#include "support/LanguageTable.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

// The logic of one window: the state its controls show and the handlers the
// screens forward to. It keeps the language texts that have been applied to its
// controls, so that a widget built later, or a test, reads the same text by the
// same control name. A live window is found by ApplyLanguage through its form name.
class TFormLogic : public QObject {
  Q_OBJECT

public:
  explicit TFormLogic(const char *formName, QObject *parent = nullptr);
  ~TFormLogic() override;

  const char *FormName() const { return m_formName; }

  // The text last set on a property of a control; empty when none was.
  QString ControlText(const QString &control, TextProperty property = TextProperty::Caption,
                      int index = 0) const;
  void SetControlText(const QString &control, TextProperty property, int index,
                      const QString &text);

  // After a language's texts went to every live window: for what a window
  // writes itself from the pack rather than through the table (grid titles).
  virtual void LanguageApplied() {}

  bool Visible() const { return m_visible; }
  void Show();
  void Close();

signals:
  void controlTextChanged(const QString &control, TextProperty property, int index,
                          const QString &text);
  void shown();
  void closed();

private:
  const char *m_formName;
  bool m_visible = false;
  QHash<QString, QString> m_texts; // "control/property/index" -> text
};

// Every live window logic of a form name, in the order they were built.
QList<TFormLogic *> LiveForms(QLatin1StringView formName);
// Tells every live window that a language was applied.
void NotifyLanguageApplied();

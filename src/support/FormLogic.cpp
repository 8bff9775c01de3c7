#include "support/FormLogic.h"

#include <QCoreApplication>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {
QList<TFormLogic *> &Registry() {
  static QList<TFormLogic *> forms;
  return forms;
}

QString TextKey(const QString &control, TextProperty property, int index) {
  return control + u'/' + QString::number(int(property)) + u'/' + QString::number(index);
}
} // namespace

TFormLogic::TFormLogic(const char *formName, QObject *parent)
    : QObject(parent), m_formName(formName) {
  setObjectName(QLatin1StringView(formName));
  Registry().append(this);
}

TFormLogic::~TFormLogic() {
  Registry().removeAll(this);
}

QString TFormLogic::ControlText(const QString &control, TextProperty property, int index) const {
  return m_texts.value(TextKey(control, property, index));
}

void TFormLogic::SetControlText(const QString &control, TextProperty property, int index,
                                const QString &text) {
  m_texts.insert(TextKey(control, property, index), text);
  emit controlTextChanged(control, property, index, text);
}

void TFormLogic::Show() {
  m_visible = true;
  emit shown();
}

void TFormLogic::Close() {
  m_visible = false;
  emit closed();
}

QList<TFormLogic *> LiveForms(QLatin1StringView formName) {
  QList<TFormLogic *> result;
  for (TFormLogic *form : Registry()) {
    if (formName == QLatin1StringView(form->FormName()))
      result.append(form);
  }
  return result;
}

void NotifyLanguageApplied() {
  // A window may go away while another reacts; walk a copy.
  const QList<TFormLogic *> forms = Registry();
  for (TFormLogic *form : forms) {
    if (Registry().contains(form))
      form->LanguageApplied();
  }
}

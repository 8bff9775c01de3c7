#pragma once

#include <QTableView>
#include <QWidget>

class QComboBox;
class QLabel;
class QPushButton;
class TFormLogic;
class TFrame_DataPage;
class TRecordGridModel;

// The page bar under a record view: the count, the page list and the four keys
// that move in it. Its key texts follow the language texts of the window that
// holds it, when that window's logic has any for "Frame_DataPage".
class TDataPageBar : public QWidget {
  Q_OBJECT

public:
  TDataPageBar(TFrame_DataPage &frame, TFormLogic *language, QWidget *parent);

private:
  void Refresh();

  TFrame_DataPage &m_frame;
  QLabel *m_result = nullptr;
  QComboBox *m_pages = nullptr;
  QPushButton *m_keys[4] = {};
};

// The grid of a record view: read-only, whole rows, the state pictures, and a
// line of its own when the page holds no row.
class TRecordGridView : public QTableView {
  Q_OBJECT

public:
  TRecordGridView(const QString &name, TRecordGridModel &model, const QString &emptyText,
                  QWidget *parent);

protected:
  void paintEvent(QPaintEvent *event) override;

private:
  TRecordGridModel &m_model;
  QString m_emptyText;
};

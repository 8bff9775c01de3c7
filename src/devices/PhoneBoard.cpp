#include "devices/PhoneBoard.h"

#include "support/Log.h"
#include "support/Paths.h"
#include "support/Shell.h"
#include "support/TextCodec.h"
#include "support/TextFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>
#include <QStringEncoder>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

const TPhoneBoard::TLegendColour TPhoneBoard::kLegendColours[9] = {
    {u"Color_IDLE", 1},         {u"Color_Connect", 7},    {u"Color_CalledRing", 2},
    {u"Color_BackCallRing", 3}, {u"Color_Dial", 4},       {u"Color_Oncall", 5},
    {u"Color_Hurryup", 6},      {u"Color_OutService", 0}, {u"Color_Other", 8}};

namespace {
QByteArray ToGb2312(const QString &text) {
  QStringEncoder encoder("GB2312");
  return encoder.isValid() ? QByteArray(encoder.encode(text)) : ToGbk(text);
}

// The file says GB2312; one written elsewhere may be UTF-8 all the same.
QString DecodeLayout(const QByteArray &bytes) {
  if (IsValidUtf8(bytes))
    return QString::fromUtf8(bytes);
  QStringDecoder decoder("GB2312");
  return decoder.isValid() ? QString(decoder.decode(bytes)) : FromGbk(bytes);
}
} // namespace

TPhoneBoard::TPhoneBoard(TCallControlDev &table, TNetModule &net, QObject *parent)
    : QObject(parent), m_table(table), m_net(net) {}

QString TPhoneBoard::LayoutFileName() {
  return AppFile(u"ini/PhonePanels.xml"_s);
}

void TPhoneBoard::RefreshPhones_tefxButtonClick() {
  emit filterCancelRequested();
  emit gridClearRequested();
  RefrshPhones_tefxButton_Enabled = false;
  m_table.PortsID_ComboBox.clear();
  m_net.NextID = 0;
  m_net.Send(TNetModule::QueryDevice);
}

void TPhoneBoard::savePhones_tefxButtonClick() {
  if (!m_table.LayoutLoaded)
    return;
  // Other consoles read this file: the group keeps its name, and colours are the
  // signed 32-bit decimals the format holds (a system colour is negative).
  QString xml = u"<?xml version=\"1.0\" encoding=\"GB2312\"?>\r\n<PhonePanels>\r\n"
                u"<PhonePanelsGrp1 name=\"Normal\""_s;
  for (const TLegendColour &c : kLegendColours)
    xml += u" %1=\"%2\""_s.arg(QString::fromUtf16(c.Attribute))
               .arg(qint32(m_table.Colours[size_t(c.Tag)]));
  xml += u">\r\n"_s;
  for (int id : m_table.Ordered())
    xml += u"<PhonePanel ID=\"%1\" left=\"%2\" Top=\"%3\"/>\r\n"_s.arg(id)
               .arg(m_table.ScreenLeft(id))
               .arg(m_table.ScreenTop(id));
  xml += u"</PhonePanelsGrp1>\r\n</PhonePanels>\r\n"_s;

  // A file refused at reading is left for whoever can rescue it.
  QString file = LayoutFileName();
  QByteArray ignored;
  const TextFileStatus status = ReadTextFile(file, &ignored);
  if (status == TextFileStatus::TooLarge || status == TextFileStatus::NotText)
    file = ReplacementPath(file);
  QDir().mkpath(QFileInfo(file).absolutePath());
  QSaveFile out(file);
  if (!out.open(QIODevice::WriteOnly) || out.write(ToGb2312(xml)) < 0 || !out.commit())
    WriteLog(u"Panel layout not saved: "_s + file + u": "_s + out.errorString());
}

bool TPhoneBoard::LoadPhones_tefxButtonClick() {
  QString fileName = LayoutFileName();
  QByteArray bytes;
  const TextFileStatus status = ReadTextFile(fileName, &bytes);
  if (status == TextFileStatus::TooLarge || status == TextFileStatus::NotText) {
    // The board starts as if the file were empty, and its layout is kept
    // beside the file from now on (and read from there while the file is in the way).
    const QString problem = TextFileProblem(status, fileName);
    fileName = ReplacementPath(fileName);
    WriteLog(u"Panel layout not loaded: "_s + problem);
    TheShell().Message(MessageKind::Warning,
                       problem + u"; the panel layout is kept in %1 instead."_s.arg(
                                     QFileInfo(fileName).fileName()));
    if (ReadTextFile(fileName, &bytes) != TextFileStatus::Read)
      bytes.clear();
  } else if (status != TextFileStatus::Read) {
    WriteLog(u"Panel layout not loaded: "_s + fileName);
    return false;
  }
  m_table.LayoutLoaded = true;
  QXmlStreamReader xml(DecodeLayout(bytes));

  // The first group under the root holds the legend and the panels.
  if (!xml.readNextStartElement()) {
    WriteLog(u"Panel layout has no root: "_s + fileName);
    return true;
  }
  bool group = false;
  while (xml.readNextStartElement()) {
    if (xml.name() == u"PhonePanelsGrp1"_s) {
      group = true;
      break;
    }
    xml.skipCurrentElement();
  }
  if (!group) {
    WriteLog(u"Panel layout has no panel group: "_s + fileName);
    return true;
  }

  // Colours in their order; the first one missing or not a number ends them, quietly.
  const QXmlStreamAttributes attributes = xml.attributes();
  for (const TLegendColour &c : kLegendColours) {
    bool ok = false;
    const QString text = attributes.value(QString::fromUtf16(c.Attribute)).toString();
    const qlonglong value = text.toLongLong(&ok);
    if (!ok)
      break;
    m_table.Colours[size_t(c.Tag)] = TColor(quint32(value));
  }

  // The panels in file order; the places in the file are not read.
  while (xml.readNextStartElement()) {
    bool ok = false;
    const int id = xml.attributes().value(u"ID"_s).toInt(&ok);
    if (!ok) {
      WriteLog(u"Panel layout: an ID that is no number ends the load"_s);
      break;
    }
    if (ValidDeviceId(id))
      m_table.AddPanel(id);
    else
      WriteLog(u"Panel layout: ID %1 outside the table dropped"_s.arg(id));
    xml.skipCurrentElement();
  }
  if (xml.hasError() && xml.error() != QXmlStreamReader::PrematureEndOfDocumentError)
    WriteLog(u"Panel layout read as far as it goes: "_s + xml.errorString());
  m_table.Relayout();
  emit boardChanged();
  return true;
}

void TPhoneBoard::LegendColourChosen(int tag, TColor colour) {
  if (tag >= 0 && tag < kStatusColourCount)
    m_table.Colours[size_t(tag)] = colour;
}

void TPhoneBoard::Wheel(bool down) {
  m_table.ScrollY = qMax(0, m_table.ScrollY + (down ? 10 : -10));
  emit boardChanged();
}

void TPhoneBoard::Resize(int width) {
  m_table.ParentWidth = width;
  m_table.Relayout();
  emit boardChanged();
}

void TPhoneBoard::Drop(int sourceId, int targetId) {
  if (targetId < 0)
    return;
  m_table.MovePanel(sourceId, targetId);
  emit boardChanged();
}

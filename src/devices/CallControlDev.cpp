#include "devices/CallControlDev.h"

#include "support/Log.h"

using namespace Qt::StringLiterals;

TCallControlDev::TCallControlDev() : m_phones(kTailIndex + 1) {
  for (int i = 0; i < kStatusColourCount; ++i)
    Colours[size_t(i)] = DefaultStatusColour(i);
  CallControlDev_Init();
}

void TCallControlDev::CallControlDev_Init() {
  for (int i = 0; i <= kTailIndex; ++i) {
    TPhoneTis &p = m_phones[size_t(i)];
    // A record knows its own ID from the start: a panel from a saved layout
    // whose device never reports must not pass the prune as device 0.
    p.ID = i;
    p.Status = 0;
    p.InList = false;
    p.Next = -1;
    p.Prev = -1;
    p.SrvClass = -1;
    p.HasPanel = false;
  }
  TPhoneTis &head = m_phones[kHeadIndex];
  TPhoneTis &tail = m_phones[kTailIndex];
  head.Next = kTailIndex;
  head.Prev = -1;
  tail.Next = -1;
  tail.Prev = kHeadIndex;
  head.InList = tail.InList = true;
}

TPhoneTis *TCallControlDev::Device(int id) {
  return ValidDeviceId(id) ? &m_phones[size_t(id)] : nullptr;
}

const TPhoneTis *TCallControlDev::Device(int id) const {
  return ValidDeviceId(id) ? &m_phones[size_t(id)] : nullptr;
}

bool TCallControlDev::Linked(int index) const {
  return index >= 0 && index <= kTailIndex && m_phones[size_t(index)].InList;
}

bool TCallControlDev::InsertBefore(int index, int reference) {
  if (!ValidDeviceId(index) || !Linked(reference) || reference == kHeadIndex)
    return false;
  TPhoneTis &p = m_phones[size_t(index)];
  TPhoneTis &ref = m_phones[size_t(reference)];
  p.Prev = ref.Prev;
  p.Next = reference;
  m_phones[size_t(ref.Prev)].Next = index;
  ref.Prev = index;
  p.InList = true;
  return true;
}

bool TCallControlDev::InsertAfter(int index, int reference) {
  if (!ValidDeviceId(index) || !Linked(reference) || reference == kTailIndex)
    return false;
  TPhoneTis &p = m_phones[size_t(index)];
  TPhoneTis &ref = m_phones[size_t(reference)];
  p.Next = ref.Next;
  p.Prev = reference;
  m_phones[size_t(ref.Next)].Prev = index;
  ref.Next = index;
  p.InList = true;
  return true;
}

// The three placing rules for one record, from the record before it.
void TCallControlDev::Place(int index) {
  TPhoneTis &p = m_phones[size_t(index)];
  const int pitchX = PanelWidth + GapX;
  if (p.Prev == kHeadIndex) {
    p.Left = MarginLeft;
    p.Top = MarginTop;
    return;
  }
  const TPhoneTis &prev = m_phones[size_t(p.Prev)];
  // A full row is told by equality: with no column at all the last column's
  // place is negative, nothing equals it, and every panel stays in one row.
  if (prev.Left == (Columns - 1) * pitchX + MarginLeft) {
    p.Left = MarginLeft;
    p.Top = prev.Top + MarginTop + PanelHeight + GapY;
  } else {
    p.Left = prev.Left + pitchX;
    p.Top = prev.Top;
  }
}

void TCallControlDev::AddPanel(int index) {
  if (!ValidDeviceId(index) || m_phones[size_t(index)].InList)
    return;
  if (!InsertBefore(index, kTailIndex))
    return;
  TPhoneTis &p = m_phones[size_t(index)];
  p.HasPanel = true;
  Place(index);
}

void TCallControlDev::MovePanel(int source, int target) {
  if (source == target || !ValidDeviceId(source) || !ValidDeviceId(target) ||
      !m_phones[size_t(source)].InList || !m_phones[size_t(target)].InList)
    return;
  const int sTop = ScreenTop(source);
  const int tTop = ScreenTop(target);
  const bool before = sTop < tTop || (sTop == tTop && ScreenLeft(source) <= ScreenLeft(target));
  Unlink(source);
  if (before)
    InsertAfter(source, target);
  else
    InsertBefore(source, target);
  Relayout();
}

void TCallControlDev::Unlink(int index) {
  if (!ValidDeviceId(index) || !m_phones[size_t(index)].InList)
    return;
  TPhoneTis &p = m_phones[size_t(index)];
  m_phones[size_t(p.Prev)].Next = p.Next;
  m_phones[size_t(p.Next)].Prev = p.Prev;
  p.Next = p.Prev = -1;
  p.InList = false;
}

void TCallControlDev::RemovePanel(int index) {
  if (!ValidDeviceId(index))
    return;
  Unlink(index);
  TPhoneTis &p = m_phones[size_t(index)];
  p.HasPanel = false;
  p.Panel = TPhonePanel{};
}

void TCallControlDev::RemoveAllPanels() {
  int i = m_phones[kHeadIndex].Next;
  while (i != kTailIndex && i >= 0) {
    const int next = m_phones[size_t(i)].Next;
    RemovePanel(i);
    i = next;
  }
}

void TCallControlDev::AddPortID(int id) {
  const QString text = QString::number(id);
  if (!PortsID_ComboBox.contains(text))
    PortsID_ComboBox.append(text);
}

void TCallControlDev::PrunePanels() {
  int i = m_phones[kHeadIndex].Next;
  while (i != kTailIndex && i >= 0) {
    const int next = m_phones[size_t(i)].Next;
    if (!PortsID_ComboBox.contains(QString::number(m_phones[size_t(i)].ID)))
      RemovePanel(i);
    i = next;
  }
  Relayout();
}

void TCallControlDev::Relayout() {
  const int pitchX = PanelWidth + GapX;
  Columns = pitchX > 0 ? ParentWidth / pitchX : 0;
  for (int i = m_phones[kHeadIndex].Next; i != kTailIndex && i >= 0; i = m_phones[size_t(i)].Next) {
    if (m_phones[size_t(i)].InList)
      Place(i);
  }
}

std::vector<int> TCallControlDev::Ordered() const {
  std::vector<int> order;
  for (int i = m_phones[kHeadIndex].Next; i != kTailIndex && i >= 0; i = m_phones[size_t(i)].Next)
    order.push_back(i);
  return order;
}

int TCallControlDev::PanelCount() const {
  return int(Ordered().size());
}

#include "program/desktop/DocumentTabs.h"

#include <algorithm>

#include "program/desktop/Text.h"

namespace desktop {

namespace {

QString TextOf(const host::BaseDocument& doc) {
  return Label(ToHost(ShortTitle(doc))) + (doc.GetChanged() ? "*" : "");
}

}  // namespace

// Without focus: a click on a tab leaves the keys where they were.
DocumentTabs::DocumentTabs(engine::Application& application, DocumentCommands& commands,
                           QWidget* parent)
    : QTabBar(parent), application_(application), commands_(commands) {
  setDocumentMode(true);
  setExpanding(false);
  setTabsClosable(true);
  setFocusPolicy(Qt::NoFocus);
  setVisible(false);
  connect(this, &QTabBar::currentChanged, this, [this](int tab) { GoTo(tab); });
  connect(this, &QTabBar::tabCloseRequested, this, [this](int tab) { CloseTab(tab); });
}

// `showing_` tells the bar's own signals, of tabs that are set here, from those of a person.
void DocumentTabs::Follow(host::BaseDocument* doc) {
  std::vector<Tab> tabs;
  for (const host::BaseDocument* open : application_.Documents())
    tabs.push_back({IdentityOf(open), TextOf(*open)});
  showing_ = true;
  if (tabs != tabs_) Show(tabs);
  const auto isActive = [&](const Tab& tab) { return tab.document == IdentityOf(doc); };
  setCurrentIndex(
      static_cast<int>(std::find_if(tabs_.begin(), tabs_.end(), isActive) - tabs_.begin()));
  showing_ = false;
}

// Tabs are renamed rather than made anew, so that one that is being pressed stays under the mouse.
void DocumentTabs::Show(const std::vector<Tab>& tabs) {
  tabs_ = tabs;
  const int wanted = static_cast<int>(tabs.size());
  while (count() > wanted) removeTab(count() - 1);
  while (count() < wanted) addTab(QString());
  for (int tab = 0; tab < wanted; ++tab) setTabText(tab, tabs[static_cast<std::size_t>(tab)].text);
  setVisible(wanted > 1);
}

// Round at both ends; `steps` may be negative.
void DocumentTabs::Turn(int steps) {
  if (count() > 1) setCurrentIndex(((currentIndex() + steps) % count() + count()) % count());
}

void DocumentTabs::GoTo(int tab) {
  if (showing_ || tab < 0) return;
  host::BaseDocument* doc = FindOpenDocument(tabs_[static_cast<std::size_t>(tab)].document);
  if (doc) host::SetActiveDocument(doc);
}

void DocumentTabs::CloseTab(int tab) {
  host::BaseDocument* doc = FindOpenDocument(tabs_[static_cast<std::size_t>(tab)].document);
  if (doc) commands_.Close(*doc);
}

}  // namespace desktop

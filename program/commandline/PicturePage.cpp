// One file with style and script in it; pictures lie beside it in a folder. Names are data
// everywhere: escaped as text, percent-encoded in addresses, and read by the script from
// attributes.
#include "program/commandline/PicturePage.h"

#include <cctype>
#include <string_view>

#include "program/commandline/Report.h"

namespace commandline {

namespace {

constexpr const char* kStyle = R"css(
:root { color-scheme: dark; --ground: #1e1e1e; --plate: #141414; --edge: #343434; --text: #d6d6d6; --dim: #9a9a9a;
  --accent: #e8aa42; }
* { box-sizing: border-box; }
body { margin: 0; background: var(--ground); color: var(--text); font: 15px/1.45 system-ui, "DejaVu Sans", sans-serif; }
header { position: sticky; top: 0; z-index: 1; display: flex; flex-wrap: wrap; gap: 12px 28px; align-items: center;
  padding: 18px 40px; background: #1e1e1ef2; border-bottom: 1px solid var(--edge); }
h1 { margin: 0; font-size: 22px; color: #ececec; overflow-wrap: anywhere; }
header p { margin: 0; color: var(--dim); }
.tools { display: flex; gap: 10px; margin-left: auto; }
input, select { font: inherit; color: inherit; background: var(--plate); border: 1px solid var(--edge); border-radius: 6px;
  padding: 7px 11px; }
input { width: 250px; }
:focus-visible { outline: 2px solid var(--accent); outline-offset: 2px; }
main { display: grid; grid-template-columns: repeat(auto-fill, minmax(300px, 1fr)); gap: 30px; padding: 32px 40px 60px; }
.state { display: block; width: 100%; padding: 0; border: 0; background: none; color: inherit; font: inherit; text-align: start;
  cursor: zoom-in; border-radius: 4px; }
.plate { display: flex; aspect-ratio: 4 / 3; background: var(--plate); outline: 1px solid var(--edge); border-radius: 2px; }
.current .plate { outline: 3px solid var(--accent); }
.plate img { width: 100%; height: 100%; object-fit: contain; }
.name { display: flex; gap: 10px; align-items: center; margin-top: 11px; font-weight: 600; }
.name bdi { overflow: hidden; text-overflow: ellipsis; white-space: nowrap; }
.name em { flex: none; font: 700 11px/18px system-ui, "DejaVu Sans", sans-serif; letter-spacing: .04em; color: #1c160a;
  background: var(--accent); padding: 0 7px; border-radius: 3px; text-transform: uppercase; }
.date { color: var(--dim); font-size: 13px; }
#none { padding: 0 40px; color: var(--dim); }
dialog { width: 100vw; height: 100vh; max-width: none; max-height: none; margin: 0; padding: 0; border: 0;
  background: #101010; color: var(--text); }
dialog[open] { display: flex; flex-direction: column; }
dialog img { flex: 1; min-height: 0; object-fit: contain; padding: 24px 24px 0; }
dialog p { display: flex; gap: 18px; align-items: baseline; justify-content: center; margin: 0; padding: 16px 24px 20px; }
dialog bdi { font-weight: 600; overflow: hidden; text-overflow: ellipsis; white-space: nowrap; }
kbd { font: inherit; color: var(--dim); font-size: 13px; }
)css";

constexpr const char* kScript = R"js(
const grid = document.querySelector('main'), states = [...grid.children];
const find = document.getElementById('find'), sort = document.getElementById('sort'), none = document.getElementById('none');
const large = document.querySelector('dialog'), picture = large.querySelector('img');
let shown = states, at = 0;
const byName = (a, b) => a.dataset.name.localeCompare(b.dataset.name, undefined, {numeric: true});
const orders = {recorded: (a, b) => a.dataset.at - b.dataset.at, name: byName,
  newest: (a, b) => b.dataset.date.localeCompare(a.dataset.date) || a.dataset.at - b.dataset.at,
  oldest: (a, b) => a.dataset.date.localeCompare(b.dataset.date) || a.dataset.at - b.dataset.at};
function update() {
  const words = find.value.toLowerCase().split(/\s+/).filter(Boolean);
  shown = [...states].sort(orders[sort.value]).filter(s => words.every(w => s.dataset.name.toLowerCase().includes(w)));
  grid.replaceChildren(...shown);
  none.hidden = shown.length > 0;
}
function show(index) {
  at = (index + shown.length) % shown.length;
  const state = shown[at];
  picture.src = state.querySelector('img').src;
  picture.alt = state.dataset.name;
  large.querySelector('bdi').textContent = state.dataset.name;
  large.querySelector('.date').textContent = state.querySelector('.date').textContent;
  if (!large.open) large.showModal();
}
grid.addEventListener('click', event => {
  const state = event.target.closest('.state');
  if (state) show(shown.indexOf(state));
});
large.addEventListener('click', () => large.close());
large.addEventListener('close', () => shown[at] && shown[at].focus());
function columns() { return shown.filter(s => s.offsetTop === shown[0].offsetTop).length; }
addEventListener('keydown', event => {
  const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
  if (large.open) {
    if (step) show(at + step);
  } else if (event.target === find || event.target === sort) {
    if (event.key === 'Escape') { find.value = ''; update(); }
    if (event.key === 'Enter' && event.target === find && shown.length) shown[0].focus();
  } else if (event.key === '/') {
    event.preventDefault();
    find.focus();
  } else if (shown.length) {
    const move = step || {ArrowUp: -columns(), ArrowDown: columns()}[event.key];
    if (!move) return;
    event.preventDefault();
    const next = shown[shown.indexOf(document.activeElement) + move];
    (next || document.activeElement).focus();
  }
});
find.addEventListener('input', update);
sort.addEventListener('change', update);
)js";

// "month/day/year hour:minute" as text whose order is that of time. The first ten characters are
// month/day/year.
std::string Sortable(const std::string& date) {
  const std::size_t blank = date.find(' ');
  if (blank == std::string::npos || blank < 6) return date;
  return date.substr(6, blank - 6) + "/" + date.substr(0, 5) + date.substr(blank);
}

std::string EntryText(const PageEntry& entry, std::size_t at) {
  const std::string name = HtmlText(entry.state.name);
  const std::string size = "width=\"" + std::to_string(entry.width) + "\" height=\"" +
                           std::to_string(entry.height) + "\"";
  std::string text = "<button class=\"state" + std::string(entry.state.current ? " current" : "") +
                     "\" data-name=\"" + name + "\" data-date=\"" +
                     HtmlText(Sortable(entry.state.date)) + "\" data-at=\"" + std::to_string(at) +
                     "\">";
  text += "<span class=\"plate\"><img loading=\"lazy\" " + size + " src=\"" + Address(entry.file) +
          "\" alt=\"\"></span>";
  text += "<span class=\"name\"><bdi title=\"" + name + "\">" + name + "</bdi>";
  if (entry.state.current) text += "<em>current</em>";
  return text + "</span><span class=\"date\">" + HtmlText(entry.state.date) + "</span></button>\n";
}

}  // namespace

// RFC 3986, section 2.3, but for "~"; slashes stay.
std::string Address(const std::string& file) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string address;
  for (const char letter : file) {
    const auto byte = static_cast<unsigned char>(letter);
    const bool plain = byte < 0x80 && (std::isalnum(byte) || byte == '.' || byte == '-' ||
                                       byte == '_' || byte == '/');
    if (plain) {
      address += letter;
    } else {
      address += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
  }
  return address;
}

std::string MakePicturePage(const std::string& title, const std::string& subtitle,
                            const std::vector<PageEntry>& entries) {
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
  page += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
  page +=
      "<title>" + HtmlText(title) + "</title>\n<style>" + kStyle + "</style>\n</head>\n<body>\n";
  page += "<header><div><h1><bdi>" + HtmlText(title) + "</bdi></h1><p>" + HtmlText(subtitle) +
          "</p></div>\n";
  page +=
      "<div class=\"tools\"><input id=\"find\" type=\"search\" placeholder=\"Search names ( / )\" "
      "aria-label=\"Search names\">\n";
  page +=
      "<select id=\"sort\" aria-label=\"Order\"><option value=\"recorded\">As in the list</option>";
  page += "<option value=\"name\">By name</option><option value=\"newest\">Newest first</option>";
  page += "<option value=\"oldest\">Oldest first</option></select></div></header>\n<main>\n";
  for (std::size_t i = 0; i < entries.size(); ++i) page += EntryText(entries[i], i);
  page += "</main>\n<p id=\"none\" hidden>No name holds that.</p>\n";
  page +=
      "<dialog><img alt=\"\"><p><bdi></bdi><span class=\"date\"></span><kbd>\u2190 \u2192 other "
      "states, Esc back</kbd></p>";
  return page + "</dialog>\n<script>" + kScript + "</script>\n</body>\n</html>\n";
}

}  // namespace commandline

// The list of states: a button each with thumbnail, name and date, and the search in it.
import { shownDate } from './data.js';

function element(kind, className, text) {
  const made = document.createElement(kind);
  if (className) made.className = className;
  if (text !== undefined) made.textContent = text;
  return made;
}

function rowOf(state, choose) {
  const button = element('button', 'state');
  button.type = 'button';
  const shot = element('span', 'shot');
  if (state.thumbnail) {
    const image = element('img');
    Object.assign(image, { loading: 'lazy', decoding: 'async', alt: '', src: state.thumbnail });
    shot.append(image);
  }
  const words = element('span', 'words');
  words.append(element('bdi', 'name', state.name), element('span', 'date', shownDate(state.date)));
  button.append(shot, words);
  button.title = state.name;
  if (state.index < 9) {
    const key = element('kbd', '', String(state.index + 1));
    key.ariaHidden = 'true';
    button.append(key);
    button.setAttribute('aria-keyshortcuts', String(state.index + 1));
  }
  button.addEventListener('click', () => choose(state.index));
  const row = element('li');
  row.append(button);
  return row;
}

export class List {
  constructor(states, choose) {
    this.states = states;
    this.rows = states.map((state) => rowOf(state, choose));
    this.names = states.map((state) => state.name.toLocaleLowerCase());
    this.shown = states.map((state) => state.index);
    this.box = document.getElementById('states');
    this.field = document.getElementById('find');
    this.none = document.getElementById('none');
    this.count = document.getElementById('count');
    this.box.append(...this.rows);
    this.field.hidden = states.length < 2;
    this.field.addEventListener('input', () => this.search());
    this.field.addEventListener('keydown', (event) => {
      if (event.key === 'Enter' && this.shown.length) choose(this.shown[0]);
      if (event.key === 'Escape') this.clear();
    });
    this.tell();
  }

  clear() {
    this.field.value = '';
    this.search();
    this.field.blur();
  }

  // Every word stands somewhere in the name.
  search() {
    const words = this.field.value.toLocaleLowerCase().split(/\s+/).filter(Boolean);
    this.shown = this.states
      .map((state) => state.index)
      .filter((i) => words.every((word) => this.names[i].includes(word)));
    const shown = new Set(this.shown);
    this.rows.forEach((row, i) => (row.hidden = !shown.has(i)));
    this.none.hidden = this.shown.length > 0;
    this.tell();
  }

  tell() {
    const all = this.states.length;
    const states = all === 1 ? '1 state' : all + ' states';
    this.count.textContent =
      this.shown.length === all ? states : this.shown.length + ' of ' + states;
  }

  mark(index) {
    this.rows.forEach((row, i) => {
      if (i === index) row.firstChild.setAttribute('aria-current', 'true');
      else row.firstChild.removeAttribute('aria-current');
    });
    this.rows[index].scrollIntoView({ block: 'nearest', inline: 'nearest' });
  }

  // The next state in that direction of those that the search leaves, round the ends.
  neighbor(index, way) {
    if (this.shown.length === 0) return index;
    const at = this.shown.indexOf(index);
    if (at < 0) return this.shown[way > 0 ? 0 : this.shown.length - 1];
    return this.shown[(at + way + this.shown.length) % this.shown.length];
  }
}

// What the page holds besides the viewer: in one element what is to be read first (title, names,
// dates, thumbnails), in others the scene as a binary glTF file in base64.

// Text that is shown, never markup: whoever shows it uses textContent.
const textOf = (value, otherwise = '') => (typeof value === 'string' ? value : otherwise);

// Only pictures that are in the page.
const pictureOf = (value) => (/^data:image\/(png|jpeg);base64,/.test(value) ? value : '');

export function readContents() {
  const contents = JSON.parse(document.getElementById('contents').textContent);
  const states = contents.states.map((state, index) => ({
    index,
    name: textOf(state.name, 'State ' + (index + 1)),
    date: textOf(state.date),
    thumbnail: pictureOf(textOf(state.thumbnail)),
  }));
  return { title: textOf(contents.title, 'Stagemarks'), states };
}

// The bytes of the scene, whose text may stand in several elements. Throws where they are damaged.
export function readScene() {
  const elements = [...document.querySelectorAll('script.scene')];
  const texts = elements.map((element) => element.textContent.trim());
  for (const element of elements) element.remove();
  const bytes = new Uint8Array(Math.ceil(texts.reduce((sum, text) => sum + lengthOf(text), 0)));
  let to = 0;
  for (const text of texts) {
    // In pieces, so that a large scene is not in memory once more as a text of its bytes.
    for (let from = 0; from < text.length; from += 1 << 20) {
      const piece = decoded(text.slice(from, from + (1 << 20)));
      for (let i = 0; i < piece.length; ++i) bytes[to++] = piece.charCodeAt(i);
    }
  }
  return bytes.buffer;
}

function decoded(text) {
  try {
    return atob(text);
  } catch {
    throw new Error('The scene in this page is damaged: a part of it is missing or was changed.');
  }
}

// Of the bytes that the text stands for.
function lengthOf(text) {
  const padding = text.endsWith('==') ? 2 : text.endsWith('=') ? 1 : 0;
  return (text.length / 4) * 3 - padding;
}

// "2026-11-22T08:10" in the reader's own way; what is no date as it stands.
export function shownDate(date) {
  const time = new Date(date);
  if (!date || Number.isNaN(time.getTime())) return date;
  return time.toLocaleString(undefined, { dateStyle: 'medium', timeStyle: 'short' });
}

// The search of the documentation: looks through SECTIONS of search_index.js, which scripts/docs makes,
// for sections that have all words, as they are typed. No server has a part in it.

const input = document.getElementById('search');
const list = document.getElementById('found');
const top_ = document.currentScript.dataset.top;
const MOST = 12;

// Small letters, and color however it is spelled.
const spelled = (text) => text.toLowerCase().replaceAll('colour', 'color');

// How well a section has the words: each counts most in its heading, then at the start of a word of
// its text, a little more where it comes again; 0 if one is missing.
function score(section, words) {
  const heading = spelled(`${section.page} ${section.heading}`);
  const text = spelled(section.text);
  let sum = 0;
  for (const word of words) {
    const points = heading.includes(word) ? 10
      : ` ${text}`.includes(` ${word}`) ? 3 : text.includes(word) ? 1 : 0;
    if (points === 0) {
      return 0;
    }
    sum += points + 0.2 * Math.min(text.split(word).length - 1, 5);
  }
  return sum;
}

// The text around the first word that occurs in it.
function excerpt(text, words) {
  const at = Math.max(0, Math.min(...words.map((word) => spelled(text).indexOf(word))
    .filter((position) => position >= 0), text.length));
  const start = Math.max(0, at === text.length ? 0 : at - 40);
  return `${start > 0 ? '…' : ''}${text.slice(start, start + 120)}`;
}

function show() {
  const words = spelled(input.value).split(/\s+/).filter((word) => word);
  const found = words.length === 0 ? [] : SECTIONS
    .map((section) => ({section, points: score(section, words)}))
    .filter(({points}) => points > 0)
    .sort((a, b) => b.points - a.points)
    .slice(0, MOST);
  list.replaceChildren(...found.map(({section}) => {
    const item = document.createElement('li');
    const link = document.createElement('a');
    link.href = `${top_}/${section.address}`;
    link.textContent = section.heading === section.page ? section.page
      : `${section.page}: ${section.heading}`;
    const text = document.createElement('span');
    text.textContent = excerpt(section.text, words);
    item.append(link, text);
    return item;
  }));
  if (words.length > 0 && found.length === 0) {
    const item = document.createElement('li');
    item.textContent = 'Nothing has all of these words.';
    list.append(item);
  }
  list.hidden = words.length === 0;
}

input.addEventListener('input', show);
addEventListener('keydown', (event) => {
  if (event.key === '/' && document.activeElement !== input) {
    event.preventDefault();
    input.focus();
  } else if (event.key === 'Escape') {
    input.value = '';
    show();
  } else if (event.key === 'Enter' && document.activeElement === input) {
    list.querySelector('a')?.click();
  }
});

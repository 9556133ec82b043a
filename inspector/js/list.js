// Lists kept in step with the store by key: an item whose record stays keeps its
// element (and so the keyboard focus), and only what changed is touched. Lists of
// choices (entities, contexts) are one stop for Tab; Up, Down, Home and End move
// among their items there.

// `create(record)` makes the item element, `update(item, record)` fills it in.
export function syncList(list, records, keyOf, create, update) {
  const existing = new Map([...list.children].map((item) => [item.dataset.key, item]));
  let previous = null;
  for (const record of records) {
    const key = String(keyOf(record));
    let item = existing.get(key);
    if (item) {
      existing.delete(key);
    } else {
      item = create(record);
      item.dataset.key = key;
    }
    update(item, record);
    const expected = previous ? previous.nextElementSibling : list.firstElementChild;
    if (item !== expected) list.insertBefore(item, expected);
    previous = item;
  }
  for (const item of existing.values()) item.remove();
  showEmpty(list.id, records.length === 0);
}

// Shows the hint that stands for an empty `name` (data-empty-for) or hides it.
export function showEmpty(name, empty) {
  const hint = document.querySelector(`[data-empty-for="${name}"]`);
  if (hint) hint.hidden = !empty;
}

// Makes the buttons of `list` one Tab stop, with arrow keys between them.
export function makeChoiceList(list) {
  list.addEventListener('keydown', (event) => {
    const buttons = [...list.querySelectorAll('li > button')];
    const at = buttons.indexOf(document.activeElement);
    const targets = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: buttons.length - 1 };
    if (at < 0 || !(event.key in targets) || event.altKey || event.ctrlKey || event.metaKey) return;
    const target = buttons[targets[event.key]];
    event.preventDefault();
    if (!target) return;
    for (const button of buttons) button.tabIndex = button === target ? 0 : -1;
    target.focus();
  });
}

// After a change: the current choice is the Tab stop, else the focused one, else the first.
export function updateChoiceStops(list) {
  const buttons = [...list.querySelectorAll('li > button')];
  const stop = buttons.find((button) => button === document.activeElement)
    ?? buttons.find((button) => button.getAttribute('aria-current') === 'true')
    ?? buttons[0];
  for (const button of buttons) button.tabIndex = button === stop ? 0 : -1;
}

// A button for a choice list: an index or id, then a text in monospace.
export function choiceButton(onChoose) {
  const item = document.createElement('li');
  const button = document.createElement('button');
  button.type = 'button';
  const index = document.createElement('span');
  index.className = 'item-index';
  const text = document.createElement('span');
  text.className = 'item-text';
  button.append(index, text);
  button.addEventListener('click', () => onChoose(item.dataset.key));
  item.append(button);
  return item;
}

// Fills a choice button made by choiceButton.
export function fillChoice(item, { index, text, current, badge }) {
  const button = item.firstElementChild;
  const [indexSpan, textSpan] = button.children;
  if (indexSpan.textContent !== index) indexSpan.textContent = index;
  if (textSpan.textContent !== text) textSpan.textContent = text;
  button.setAttribute('aria-current', current ? 'true' : 'false');
  let badgeSpan = button.querySelector('.item-badge');
  if (badge && !badgeSpan) {
    // Read as "entity 2, stopped" rather than "entity 2stopped".
    const separator = document.createElement('span');
    separator.className = 'visually-hidden';
    separator.textContent = ', ';
    badgeSpan = document.createElement('span');
    badgeSpan.className = 'item-badge';
    badgeSpan.append(separator, document.createTextNode(''));
    button.append(badgeSpan);
  }
  if (!badge) {
    badgeSpan?.remove();
  } else if (badgeSpan.lastChild.textContent !== badge) {
    badgeSpan.lastChild.textContent = badge;
  }
}

// A JSON value shown as an expandable tree of names and values, operable like any tree
// widget: Up and Down move, Right opens or goes to the first child, Left closes or goes
// to the parent, Home and End jump, Enter and Space open and close. Which branches are
// open, and which item has the focus, survive when a new value of the same shape
// arrives, so that live updates do not undo what the user opened.

const OPEN_DEPTH = 2;

export class TreeView {
  // `host` receives the tree; `label` names it for assistive technology.
  constructor(host, label) {
    this.host = host;
    this.label = label;
    // Paths ("position.x", "[2].name") the user opened or closed, against the default.
    this.toggled = new Set();
    this.rendered = undefined;
  }

  // Draws `value`; `undefined` empties the tree.
  show(value) {
    const text = value === undefined ? undefined : JSON.stringify(value);
    if (text === this.rendered) return;
    this.rendered = text;
    const hadFocus = this.host.contains(document.activeElement);
    const focusedPath = hadFocus ? document.activeElement.dataset.path ?? null : null;
    this.host.replaceChildren();
    if (value === undefined) {
      // The focus stays in the panel rather than falling back to the page.
      const panel = this.host.closest('section');
      if (hadFocus && panel) {
        panel.tabIndex = -1;
        panel.focus();
      }
      return;
    }
    const tree = document.createElement('ul');
    tree.className = 'tree';
    tree.setAttribute('role', 'tree');
    tree.setAttribute('aria-label', this.label);
    tree.addEventListener('keydown', (event) => this.onKey(event));
    tree.addEventListener('click', (event) => this.onClick(event));
    const entries = isBranch(value) ? entriesOf(value) : [['value', value]];
    for (const [name, child] of entries) tree.append(this.item(name, child, pathOf('', name, value), 1));
    this.host.append(tree);
    const items = this.items();
    const focused = items.find((item) => item.dataset.path === focusedPath) ?? items[0];
    if (focused) {
      focused.tabIndex = 0;
      if (focusedPath !== null) focused.focus();
    }
  }

  item(name, value, path, depth) {
    const item = document.createElement('li');
    item.setAttribute('role', 'treeitem');
    item.setAttribute('aria-level', String(depth));
    item.dataset.path = path;
    item.tabIndex = -1;
    const row = document.createElement('div');
    row.className = 'row';
    const twisty = span('twisty', isBranch(value) ? '▸' : '');
    twisty.setAttribute('aria-hidden', 'true');
    row.append(twisty, span('name', name), valueSpan(value));
    item.append(row);
    if (isBranch(value)) {
      const open = (depth < OPEN_DEPTH) !== this.toggled.has(path);
      item.setAttribute('aria-expanded', String(open));
      const group = document.createElement('ul');
      group.setAttribute('role', 'group');
      for (const [childName, child] of entriesOf(value)) {
        group.append(this.item(childName, child, pathOf(path, childName, value), depth + 1));
      }
      item.append(group);
    }
    return item;
  }

  // The items a user can reach: those whose every ancestor is open.
  items() {
    return [...this.host.querySelectorAll('[role="treeitem"]')].filter((item) => {
      for (let parent = item.parentElement.closest('[role="treeitem"]'); parent;
        parent = parent.parentElement.closest('[role="treeitem"]')) {
        if (parent.getAttribute('aria-expanded') === 'false') return false;
      }
      return true;
    });
  }

  toggle(item, open) {
    const current = item.getAttribute('aria-expanded');
    if (current === null || current === String(open)) return;
    item.setAttribute('aria-expanded', String(open));
    const path = item.dataset.path;
    if (this.toggled.has(path)) this.toggled.delete(path); else this.toggled.add(path);
  }

  moveTo(item) {
    if (!item) return;
    for (const other of this.host.querySelectorAll('[role="treeitem"][tabindex="0"]')) other.tabIndex = -1;
    item.tabIndex = 0;
    item.focus();
  }

  onClick(event) {
    const item = event.target.closest('[role="treeitem"]');
    if (!item) return;
    this.toggle(item, item.getAttribute('aria-expanded') !== 'true');
    this.moveTo(item);
  }

  onKey(event) {
    const item = event.target.closest('[role="treeitem"]');
    if (!item || event.altKey || event.ctrlKey || event.metaKey) return;
    const items = this.items();
    const at = items.indexOf(item);
    const expanded = item.getAttribute('aria-expanded');
    const actions = {
      ArrowDown: () => this.moveTo(items[at + 1]),
      ArrowUp: () => this.moveTo(items[at - 1]),
      Home: () => this.moveTo(items[0]),
      End: () => this.moveTo(items[items.length - 1]),
      ArrowRight: () => (expanded === 'false' ? this.toggle(item, true)
        : expanded === 'true' ? this.moveTo(items[at + 1]) : undefined),
      ArrowLeft: () => (expanded === 'true' ? this.toggle(item, false)
        : this.moveTo(item.parentElement.closest('[role="treeitem"]'))),
      Enter: () => this.toggle(item, expanded !== 'true'),
      ' ': () => this.toggle(item, expanded !== 'true'),
    };
    const action = actions[event.key];
    if (!action) return;
    event.preventDefault();
    action();
  }
}

function isBranch(value) {
  return value !== null && typeof value === 'object';
}

function entriesOf(value) {
  return Array.isArray(value) ? value.map((child, i) => [`[${i}]`, child]) : Object.entries(value);
}

function pathOf(parent, name, container) {
  if (Array.isArray(container)) return `${parent}${name}`;
  return parent === '' ? name : `${parent}.${name}`;
}

function span(className, text) {
  const element = document.createElement('span');
  element.className = className;
  element.textContent = text;
  return element;
}

function valueSpan(value) {
  if (Array.isArray(value)) return span('value value-summary', `[${value.length}]`);
  if (isBranch(value)) {
    const count = Object.keys(value).length;
    return span('value value-summary', `{${count} ${count === 1 ? 'member' : 'members'}}`);
  }
  if (typeof value === 'string') return span('value value-string', JSON.stringify(value));
  if (typeof value === 'number') return span('value value-number', String(value));
  return span(`value value-${value === null ? 'null' : 'boolean'}`, String(value));
}

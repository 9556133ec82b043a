// What the page knows of the host, in one place. Views read it and subscribe to its
// changes; the refresh and the user's actions change it through update(). Values are
// replaced, never changed in place, so that a view tells what changed by comparing.

const BREAKPOINTS_KEY = 'nox-inspector.breakpoints';

export const INVALID_ENTITY = 4294967295;

export function createState() {
  return {
    connection: 'connecting', // 'connecting', 'connected' or 'disconnected'
    suspended: false,
    suspendedEntity: null,
    engines: [], // [{path, enabled}] in registration order
    entities: [], // ids in registration order
    selectedEntity: null,
    contexts: [], // the selected entity's stack, top first: [{index, location}]
    selectedContext: null, // index in the stack (0 is the bottom)
    details: null, // {entity, index, location, value} of the selected context
    events: [], // [{id, type, requestId, entity, location}] in queue order
    breakpoints: loadBreakpoints(), // [{requestId, location, hitCount}] set from this tab
    locations: [], // every context location seen, for the breakpoint box's suggestions
    message: null, // {text, kind: 'error' or 'info'}
  };
}

export class Store {
  constructor(state) {
    this.state = state;
    this.listeners = [];
    this.scheduled = false;
  }

  get() { return this.state; }

  // `listener(state, previous)` runs after changes, once per batch of updates.
  subscribe(listener) {
    this.listeners.push(listener);
    listener(this.state, null);
  }

  update(changes) {
    const next = { ...this.state, ...changes };
    if (Object.keys(changes).every((key) => this.state[key] === next[key])) return;
    if (!this.scheduled) {
      this.scheduled = true;
      const previous = this.state;
      queueMicrotask(() => {
        this.scheduled = false;
        for (const listener of this.listeners) listener(this.state, previous);
      });
    }
    this.state = next;
    if ('breakpoints' in changes) saveBreakpoints(next.breakpoints);
  }
}

// Breakpoints outlive a reload of the page (the host keeps them), not the tab.
function loadBreakpoints() {
  try {
    const saved = JSON.parse(sessionStorage.getItem(BREAKPOINTS_KEY) ?? '[]');
    return Array.isArray(saved) ? saved : [];
  } catch {
    return [];
  }
}

function saveBreakpoints(breakpoints) {
  try {
    sessionStorage.setItem(BREAKPOINTS_KEY, JSON.stringify(breakpoints));
  } catch {
    // A tab without storage forgets them on reload; the host still has them.
  }
}

// Whether two arrays of plain records hold the same values, so that an unchanged
// answer keeps the previous array and nothing is drawn again.
export function sameRecords(first, second) {
  if (first === second) return true;
  if (!first || !second || first.length !== second.length) return false;
  return first.every((record, i) => JSON.stringify(record) === JSON.stringify(second[i]));
}

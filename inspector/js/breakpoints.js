// Breakpoints: a location (suggested from the contexts seen so far), an optional hit
// count, the button "Add breakpoint", and the list labelled "Breakpoints" of those set
// from this tab, each with a button that removes it.

import { syncList } from './list.js';

export function mountBreakpoints(store, actions) {
  const form = document.getElementById('breakpoint-form');
  const location = document.getElementById('breakpoint-location');
  const hits = document.getElementById('breakpoint-hits');
  const list = document.getElementById('breakpoints');
  const suggestions = document.getElementById('known-locations');

  form.addEventListener('submit', async (event) => {
    event.preventDefault();
    const where = location.value.trim();
    const count = hits.value === '' ? null : Number(hits.value);
    if (where === '' || (count !== null && !(Number.isInteger(count) && count >= 1))) {
      actions.tell('A breakpoint needs a location, such as sim:agents/2/move, and a hit count of 1 or more if any.',
        'error');
      return;
    }
    if (await actions.addBreakpoint(where, count)) {
      location.value = '';
      hits.value = '';
    }
  });

  store.subscribe((state, previous) => {
    if (!previous || previous.locations !== state.locations) {
      syncList(suggestions, state.locations, (where) => where, () => document.createElement('option'),
        (option, where) => { option.value = where; });
    }
    if (previous && previous.breakpoints === state.breakpoints) return;
    syncList(list, state.breakpoints, (breakpoint) => breakpoint.requestId, (breakpoint) => {
      const item = document.createElement('li');
      const text = document.createElement('span');
      text.className = 'item-text';
      const remove = document.createElement('button');
      remove.type = 'button';
      remove.className = 'small';
      remove.textContent = 'Remove';
      remove.addEventListener('click', () => {
        // The focus goes on to the next breakpoint, or back to the location box.
        const next = item.nextElementSibling ?? item.previousElementSibling;
        actions.removeBreakpoint(breakpoint.requestId).then(() => {
          if (!item.isConnected) (next?.querySelector('button') ?? location).focus();
        });
      });
      item.append(text, remove);
      return item;
    }, (item, breakpoint) => {
      const hitText = breakpoint.hitCount ? ` (from hit ${breakpoint.hitCount})` : '';
      item.firstElementChild.textContent = `${breakpoint.location}${hitText}`;
      item.lastElementChild.setAttribute('aria-label', `Remove the breakpoint at ${breakpoint.location}`);
    });
  });
}

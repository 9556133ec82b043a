// The list labelled "Events": the host's queued events in order, each with its kind,
// entity and location, and a button that empties the queue.

import { syncList } from './list.js';
import { INVALID_ENTITY } from './state.js';

export function mountEvents(store, actions) {
  const list = document.getElementById('events');
  document.getElementById('clear-events').addEventListener('click', () => actions.clearEvents());

  store.subscribe((state, previous) => {
    if (previous && previous.events === state.events) return;
    const follow = list.scrollTop + list.clientHeight >= list.scrollHeight - 4;
    syncList(list, state.events, (event) => event.id, (event) => {
      const item = document.createElement('li');
      const type = document.createElement('span');
      type.className = 'event-type';
      type.dataset.type = event.type;
      type.textContent = event.type;
      const entity = document.createElement('span');
      entity.className = 'event-entity';
      entity.textContent = event.entity === INVALID_ENTITY ? '' : `entity ${event.entity}`;
      const where = document.createElement('span');
      where.className = 'item-text';
      where.textContent = event.location ?? '';
      item.append(type, entity, where);
      item.title = `Event ${event.id}, from subscription ${event.requestId}`;
      return item;
    }, () => {});
    // The newest event stays in sight unless the user scrolled back.
    if (follow) list.scrollTop = list.scrollHeight;
  });
}

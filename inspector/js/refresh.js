// One refresh: reads the host's state into the store. It reads the execution state,
// the engines, the entities and the event queue together, then the selected entity's
// stack and the selected context. Whatever it started is over when it ends, so that
// the poller never stacks requests. A host that does not answer (or refuses the
// token) fails the refresh; a part that vanished between two reads (an entity gone,
// a context popped) is only shown as gone.

import { INVALID_ENTITY, sameRecords } from './state.js';

const MAX_LOCATIONS = 200;
// Events read one by one in a refresh, at most: a burst is taken in over several.
const MAX_NEW_EVENTS = 32;

export class Refresher {
  constructor(api, store) {
    this.api = api;
    this.store = store;
    // Event records by id: an event never changes while it is queued.
    this.events = new Map();
  }

  // A host that went away may come back as a new process, whose event ids start over.
  forgetEvents() {
    this.events.clear();
  }

  async run() {
    const [execution, engines, entities, eventIds] = await settle([
      this.api.readExecution(),
      this.api.readEngines(),
      this.api.readEntities(),
      this.api.readEventIds(),
    ]);
    const before = this.store.get();
    const suspended = execution.suspended === true;
    const suspendedEntity = suspended && execution.entity !== INVALID_ENTITY ? execution.entity : null;
    const newSuspension = suspended && (!before.suspended || before.suspendedEntity !== suspendedEntity);
    let selectedEntity = newSuspension ? suspendedEntity : before.selectedEntity;
    if (!entities.includes(selectedEntity)) selectedEntity = null;
    this.store.update({
      connection: 'connected',
      suspended,
      suspendedEntity,
      engines: sameRecords(before.engines, engines) ? before.engines : engines,
      entities: sameRecords(before.entities, entities) ? before.entities : entities,
      selectedEntity,
      ...(selectedEntity !== before.selectedEntity ? { contexts: [], selectedContext: null, details: null } : {}),
    });
    await Promise.all([this.readStack(selectedEntity, newSuspension), this.readEvents(eventIds)]);
  }

  // The stack of `entity`, top first. While the entity is the suspended one, a new
  // suspension or a changed stack selects the top context.
  async readStack(entity, newSuspension) {
    if (entity === null) return;
    const stack = await optional(this.api.readContexts(entity), []);
    const state = this.store.get();
    if (state.selectedEntity !== entity) return;
    const contexts = stack.map(({ index, location }) => ({ index, location })).reverse();
    const changed = !sameRecords(state.contexts, contexts);
    let selectedContext = state.selectedContext;
    const followsTop = state.suspended && state.suspendedEntity === entity && (changed || newSuspension);
    if (followsTop) selectedContext = contexts.length > 0 ? contexts[0].index : null;
    if (!contexts.some((context) => context.index === selectedContext)) selectedContext = null;
    this.store.update({
      contexts: changed ? contexts : state.contexts,
      selectedContext,
      locations: changed ? rememberLocations(state.locations, contexts) : state.locations,
    });
    if (changed || selectedContext !== state.selectedContext || state.details === null) {
      await this.readDetails(entity, selectedContext);
    }
  }

  // What the selected context writes about itself.
  async readDetails(entity, index) {
    if (index === null) {
      this.store.update({ details: null });
      return;
    }
    const value = await optional(this.api.readContext(entity, index), undefined);
    const state = this.store.get();
    if (state.selectedEntity !== entity || state.selectedContext !== index) return;
    const context = state.contexts.find((candidate) => candidate.index === index);
    this.store.update({ details: value === undefined ? null : { entity, index, location: context?.location, value } });
  }

  // The queued events, reading only those not seen before.
  async readEvents(ids) {
    const queued = new Set(ids);
    for (const id of this.events.keys()) {
      if (!queued.has(id)) this.events.delete(id);
    }
    const unseen = ids.filter((id) => !this.events.has(id)).slice(0, MAX_NEW_EVENTS);
    const records = await Promise.all(unseen.map((id) => optional(this.api.readEvent(id), null)));
    records.forEach((record, i) => {
      if (record !== null) this.events.set(unseen[i], record);
    });
    const events = ids.filter((id) => this.events.has(id)).map((id) => this.events.get(id));
    const before = this.store.get().events;
    if (!sameRecords(before, events)) this.store.update({ events });
  }
}

// Waits for every request, then fails with the first failure: none is left running.
async function settle(requests) {
  const results = await Promise.allSettled(requests);
  const failed = results.find((result) => result.status === 'rejected');
  if (failed) throw failed.reason;
  return results.map((result) => result.value);
}

// The value of a read whose resource may have vanished meanwhile (`fallback` then);
// a host that does not answer or refuses the token still fails the refresh.
async function optional(request, fallback) {
  try {
    return await request;
  } catch (error) {
    if (error.unreachable || error.unauthorized) throw error;
    return fallback;
  }
}

function rememberLocations(known, contexts) {
  const fresh = contexts.map((context) => context.location).filter((location) => !known.includes(location));
  return fresh.length === 0 ? known : [...known, ...fresh].sort().slice(0, MAX_LOCATIONS);
}

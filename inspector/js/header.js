// The header: the host's address, whether it answers, and whether it runs; below it,
// the line that says what went wrong.

export function mountHeader(store) {
  document.getElementById('host-address').textContent = window.location.host;
  const connection = document.getElementById('connection');
  const execution = document.getElementById('execution-state');
  const message = document.getElementById('message');

  store.subscribe((state) => {
    if (connection.dataset.state !== state.connection) {
      connection.dataset.state = state.connection;
      connection.textContent = state.connection;
    }
    const text = !state.suspended ? 'running'
      : state.suspendedEntity === null ? 'suspended' : `suspended (entity ${state.suspendedEntity})`;
    if (execution.textContent !== text) execution.textContent = text;
    execution.dataset.state = state.suspended ? 'suspended' : 'running';
    // What the host last said may no longer hold while it does not answer.
    execution.toggleAttribute('data-stale', state.connection !== 'connected');

    message.hidden = state.message === null;
    if (state.message !== null) {
      message.textContent = state.message.text;
      message.dataset.kind = state.message.kind;
    }
  });
}

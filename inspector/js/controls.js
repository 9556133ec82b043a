// The execution commands: buttons named Suspend, Resume, Step in, Step over and Step
// out, each enabled only when the host would accept it, and the keys debuggers use
// for them: F6 or Pause, F8, F11, F10, Shift+F11.

const BUTTONS = [
  { id: 'suspend', command: 'suspend', whenSuspended: false },
  { id: 'resume', command: 'resume', whenSuspended: true },
  { id: 'step-in', command: 'stepIn', whenSuspended: true },
  { id: 'step-over', command: 'stepOver', whenSuspended: true },
  { id: 'step-out', command: 'stepOut', whenSuspended: true },
];

// The command of a key press, or undefined.
export function commandForKey(event) {
  if (event.ctrlKey || event.altKey || event.metaKey) return undefined;
  if (event.shiftKey) return event.key === 'F11' ? 'stepOut' : undefined;
  return { F6: 'suspend', Pause: 'suspend', F8: 'resume', F11: 'stepIn', F10: 'stepOver' }[event.key];
}

export function mountControls(store, actions) {
  const buttons = BUTTONS.map((entry) => ({ ...entry, element: document.getElementById(entry.id) }));
  for (const button of buttons) {
    button.element.addEventListener('click', () => actions.command(button.command));
  }
  const applies = (button, state) => state.connection === 'connected' && state.suspended === button.whenSuspended;

  document.addEventListener('keydown', (event) => {
    const command = commandForKey(event);
    if (!command) return;
    // Taken from the browser (F11 would go full screen, F10 to its menu) even when
    // the command does not apply now.
    event.preventDefault();
    const button = buttons.find((candidate) => candidate.command === command);
    if (applies(button, store.get())) actions.command(command);
  });

  store.subscribe((state) => {
    // A button that goes off under the keyboard hands the focus to one that is on
    // (Resume to Suspend, say), rather than dropping it to the page.
    const focused = buttons.find((button) => button.element === document.activeElement);
    for (const button of buttons) button.element.disabled = !applies(button, state);
    if (focused && focused.element.disabled) buttons.find((button) => !button.element.disabled)?.element.focus();
  });
}

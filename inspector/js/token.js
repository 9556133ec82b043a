// The access token, for hosts that ask for one: asked once in a dialog, kept for the
// tab in sessionStorage (never in the URL, never logged), sent by the API client.

const KEY = 'nox-inspector.token';

// The token given to this page, for a tab whose storage is off.
let memory = null;

function readToken() {
  try {
    return sessionStorage.getItem(KEY);
  } catch {
    return null;
  }
}

function saveToken(token) {
  try {
    sessionStorage.setItem(KEY, token);
  } catch {
    // Without storage the token lasts as long as the page.
  }
  memory = token;
}

// The token to send: the tab's, or the one given to this page when storage is off.
export function currentToken() {
  return readToken() ?? memory;
}

// Returns ask(reason), which opens the dialog unless it is open; `onToken()` runs once
// the user gave one.
export function mountTokenPrompt(onToken) {
  const dialog = document.getElementById('token-dialog');
  const form = document.getElementById('token-form');
  const input = document.getElementById('token-input');
  const reason = document.getElementById('token-reason');

  // The page can do nothing without it: Escape does not dismiss the dialog.
  dialog.addEventListener('cancel', (event) => event.preventDefault());
  form.addEventListener('submit', () => {
    const token = input.value.trim();
    if (token === '') return;
    saveToken(token);
    input.value = '';
    onToken();
  });

  return (why) => {
    reason.textContent = why;
    if (!dialog.open) {
      dialog.showModal();
      input.focus();
    }
  };
}

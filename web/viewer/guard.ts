// Runs before all else. The viewer may connect to nothing, unless its address names a file to be fetched: then to that
// file's server. The policy in the page's head forbids everything else in any case.

const url = new URLSearchParams(location.hash.slice(1)).get('url');
let allowed = "'none'";
try {
    if (url) allowed = new URL(url, location.href).origin;
} catch {
    // No address: nothing is allowed, and the viewer says so.
}
const policy = document.createElement('meta');
policy.httpEquiv = 'Content-Security-Policy';
policy.content = `connect-src ${allowed}`;
document.head.append(policy);

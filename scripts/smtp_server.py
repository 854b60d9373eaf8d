#!/usr/bin/env python3
"""A real SMTP server on 127.0.0.1 for the mail tests and the demo (Debian's python3-aiosmtpd).

Prints the port it listens on as its first line, then keeps every message it accepts in FOLDER:
NNN.eml (the raw message), NNN_<name> for each attachment and NNN.json (envelope sender and
recipients, authenticated login, subject, From header, text body, attachment names), written last.
Stops on SIGTERM or SIGINT.

  smtp_server.py FOLDER [--port N] [--user U --password P] [--reject-subject TEXT]

With --user/--password the server offers AUTH LOGIN/PLAIN and refuses mail without it; a message
whose Subject header contains TEXT is refused with 554.
"""
import argparse
import email
import email.policy
import json
import os
import signal
import socket
import threading
import warnings

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult, LoginPassword

warnings.filterwarnings("ignore")


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


class Keeper:
    def __init__(self, folder, reject):
        self.folder = folder
        self.reject = reject
        # A restarted server goes on after the messages already kept.
        self.count = len([f for f in os.listdir(folder) if f.endswith(".json")])
        self.lock = threading.Lock()

    async def handle_DATA(self, server, session, envelope):
        message = email.message_from_bytes(envelope.content, policy=email.policy.default)
        subject = str(message.get("Subject", ""))
        if self.reject and self.reject in subject:
            return "554 Mensaje rechazado por el servidor de prueba"
        with self.lock:
            self.count += 1
            base = os.path.join(self.folder, "%03d" % self.count)
        login = getattr(session, "auth_data", None)
        if hasattr(login, "login"):
            login = login.login.decode("utf-8", "replace")
        body = ""
        attachments = []
        for part in message.walk():
            if part.is_multipart():
                continue
            name = part.get_filename()
            if name:
                with open(base + "_" + name, "wb") as f:
                    f.write(part.get_payload(decode=True))
                attachments.append(name)
            elif part.get_content_type() == "text/plain" and not body:
                body = part.get_content()
        summary = {
            "from": envelope.mail_from,
            "to": envelope.rcpt_tos,
            "login": login or "",
            "subject": subject,
            "header_from": str(message.get("From", "")),
            "body": body,
            "attachments": attachments,
        }
        with open(base + ".eml", "wb") as raw:
            raw.write(envelope.content)
        with open(base + ".json.tmp", "w", encoding="utf-8") as f:
            json.dump(summary, f, ensure_ascii=False)
        os.replace(base + ".json.tmp", base + ".json")
        return "250 OK"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--user")
    parser.add_argument("--password")
    parser.add_argument("--reject-subject")
    args = parser.parse_args()
    os.makedirs(args.folder, exist_ok=True)

    options = {}
    if args.user:
        def authenticator(server, session, envelope, mechanism, auth_data):
            ok = (isinstance(auth_data, LoginPassword)
                  and auth_data.login.decode() == args.user
                  and auth_data.password.decode() == args.password)
            return AuthResult(success=ok, handled=False, auth_data=auth_data)
        options = dict(authenticator=authenticator, auth_required=True, auth_require_tls=False)

    port = args.port or free_port()
    controller = Controller(Keeper(args.folder, args.reject_subject), hostname="127.0.0.1",
                            port=port, **options)
    controller.start()
    print(port, flush=True)

    stop = threading.Event()
    signal.signal(signal.SIGTERM, lambda *_: stop.set())
    signal.signal(signal.SIGINT, lambda *_: stop.set())
    stop.wait()
    controller.stop()


if __name__ == "__main__":
    main()

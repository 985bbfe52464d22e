INSERT INTO CustomAction (Action, Type, Source, Target) VALUES ('CheckEmail', 2, 'TarnTool', 'check -- "[EMAIL]"')
INSERT INTO CustomAction (Action, Type, Source, Target) VALUES ('WriteStartUpFile', 3074, 'TarnTool', 'config --quiet "[INSTALLFOLDER]"')
UPDATE Property SET Value = 'WIX_DOWNGRADE_DETECTED;WIX_UPGRADE_DETECTED;EMAIL;INSTALLFOLDER' WHERE Property = 'SecureCustomProperties'
UPDATE Component SET Attributes = 384 WHERE Component = 'StartUpFile'
